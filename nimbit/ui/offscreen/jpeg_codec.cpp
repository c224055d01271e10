#include "nimbit/ui/offscreen/image_codecs.h"

#include "nimbit/graphics/jpeg_errors.h"

#include <algorithm>
#include <cstdlib>

#include <jerror.h> // after jpeglib.h, which it needs

// JPG decoding through libjpeg. Everything that owns memory is declared in the caller of
// run_decompress, so that it is released normally after an error's jump.

namespace nimbit::ui::offscreen {

namespace {

using graphics::jpeg_errors;

// Warnings are silent, except that data ending early is a failure: libjpeg would fill the rest
// with grey and call the image good.
void on_message(j_common_ptr info, int level) {
    if (level < 0 && info->err->msg_code == JWRN_JPEG_EOF)
        graphics::jpeg_error_exit(info);
}

// Fills `pixels` (sized by the caller once the header is known); false on any libjpeg error.
bool run_decompress(jpeg_decompress_struct& info, jpeg_errors& errors, const unsigned char* bytes,
                    size_t size, unsigned long long max_pixels, std::vector<unsigned char>& pixels,
                    _vec2<int>& out_size) {
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
    const bool cmyk = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
    info.out_color_space = cmyk ? JCS_CMYK : JCS_EXT_RGBA;
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

bool decode_jpeg(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out) {
    if (!bytes || size < 4 || bytes[0] != 0xFF || bytes[1] != 0xD8)
        return false;
    jpeg_decompress_struct info{};
    jpeg_errors errors{};
    graphics::install_jpeg_errors(errors, on_message);
    info.err = &errors.base;
    std::vector<unsigned char> pixels;
    _vec2<int> decoded_size;
    if (!run_decompress(info, errors, bytes, size, max_pixels, pixels, decoded_size))
        return false;
    out.size = decoded_size;
    out.alpha = false;
    out.pixels = std::move(pixels);
    return true;
}

} // namespace nimbit::ui::offscreen
