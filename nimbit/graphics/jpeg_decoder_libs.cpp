#include "nimbit/graphics/image_decoder.h"

#include "nimbit/graphics/jpeg_errors.h"

#include <algorithm>
#include <cstdlib>

#include <jerror.h> // after jpeglib.h, which it needs

// JPG decoding through libjpeg. Everything that owns memory is declared in the caller of
// run_decompress, so that it is released normally after an error's jump.

namespace nimbit::graphics {

namespace {

// Warnings are silent, except that data ending early is a failure: libjpeg would fill the rest
// with grey and call the image good.
void on_message(j_common_ptr info, int level) {
    if (level < 0 && info->err->msg_code == JWRN_JPEG_EOF)
        jpeg_error_exit(info);
}

// Fills `pixels` (sized by the caller once the header is known); false on any libjpeg error.
bool run_decompress(jpeg_decompress_struct& info, jpeg_errors& errors, const unsigned char* bytes,
                    size_t size, unsigned long long max_pixels, int min_width,
                    std::vector<unsigned char>& pixels, _vec2<int>& out_size, _vec2<int>& full_size) {
    if (setjmp(errors.jump)) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, bytes, static_cast<unsigned long>(size));
    if (jpeg_read_header(&info, TRUE) != JPEG_HEADER_OK ||
        !size_allowed(info.image_width, info.image_height, max_pixels)) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    full_size = {static_cast<int>(info.image_width), static_cast<int>(info.image_height)};
    const bool cmyk = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
    info.out_color_space = cmyk ? JCS_CMYK : JCS_EXT_RGBA;
    if (min_width > 0) {
        // The smallest eighth still wide enough; the DCT then skips most of the work.
        info.scale_denom = 8;
        for (info.scale_num = 1; info.scale_num < 8; ++info.scale_num) {
            jpeg_calc_output_dimensions(&info);
            if (info.output_width >= JDIMENSION(min_width))
                break;
        }
    }
    jpeg_start_decompress(&info);
    const size_t width = info.output_width, height = info.output_height;
    if (info.output_components != 4 || !size_allowed(width, height, max_pixels)) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    pixels.resize(width * height * 4);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = pixels.data() + size_t(info.output_scanline) * width * 4;
        if (jpeg_read_scanlines(&info, &row, 1) != 1) {
            jpeg_destroy_decompress(&info);
            return false;
        }
    }
    jpeg_finish_decompress(&info);
    if (cmyk) {
        // Files with four components store inverted CMYK (the common Adobe convention).
        for (size_t i = 0; i < pixels.size(); i += 4) {
            const unsigned k = pixels[i + 3];
            pixels[i + 0] = static_cast<unsigned char>(pixels[i + 0] * k / 255);
            pixels[i + 1] = static_cast<unsigned char>(pixels[i + 1] * k / 255);
            pixels[i + 2] = static_cast<unsigned char>(pixels[i + 2] * k / 255);
            pixels[i + 3] = 255;
        }
    }
    out_size = {static_cast<int>(width), static_cast<int>(height)};
    jpeg_destroy_decompress(&info);
    return true;
}

} // namespace

bool decode_jpeg_reduced(const unsigned char* bytes, size_t size, unsigned long long max_pixels,
                         int min_width, rgba_image& out, _vec2<int>* full_size) {
    if (!bytes || size < 4 || bytes[0] != 0xFF || bytes[1] != 0xD8) {
        out = {};
        return false;
    }
    jpeg_decompress_struct info{};
    jpeg_errors errors{};
    install_jpeg_errors(errors, on_message);
    info.err = &errors.base;
    std::vector<unsigned char> pixels = std::move(out.pixels);
    _vec2<int> decoded_size, whole_size;
    if (!run_decompress(info, errors, bytes, size, max_pixels, min_width, pixels, decoded_size, whole_size)) {
        out = {};
        return false;
    }
    if (full_size)
        *full_size = whole_size;
    out.size = decoded_size;
    out.alpha = false;
    out.pixels = std::move(pixels);
    return true;
}

bool decode_jpeg(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out) {
    return decode_jpeg_reduced(bytes, size, max_pixels, 0, out);
}

} // namespace nimbit::graphics
