#include "nimbit/graphics/jpeg_encoder.h"

#include "nimbit/graphics/jpeg_errors.h"

#include <cstdlib>
#include <new>

// The output buffer is owned by the caller of run_compress and freed normally after a jump.

namespace nimbit::graphics {

namespace {

void on_message(j_common_ptr, int) {}

bool run_compress(jpeg_compress_struct& info, jpeg_errors& errors, const rgba_view& image,
                  unsigned char*& buffer, unsigned long& length) {
    if (setjmp(errors.jump)) {
        jpeg_destroy_compress(&info);
        return false;
    }
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, &buffer, &length);
    info.image_width = static_cast<JDIMENSION>(image.width);
    info.image_height = static_cast<JDIMENSION>(image.height);
    info.input_components = 4;
    info.in_color_space = JCS_EXT_RGBX; // the fourth byte, alpha, is skipped
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 100, TRUE);
    // Full quality also means full colour resolution.
    for (int c = 0; c < info.num_components; ++c)
        info.comp_info[c].h_samp_factor = info.comp_info[c].v_samp_factor = 1;
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        JSAMPROW row = const_cast<unsigned char*>(image.pixels) + size_t(info.next_scanline) * image.pitch;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    return true;
}

} // namespace

std::vector<unsigned char> encode_jpg(const rgba_view& image) {
    if (image.pixels == nullptr || image.width <= 0 || image.height <= 0 ||
        image.width > JPEG_MAX_DIMENSION || image.height > JPEG_MAX_DIMENSION ||
        image.pitch < static_cast<size_t>(image.width) * 4)
        return {};
    jpeg_compress_struct info{};
    jpeg_errors errors{};
    install_jpeg_errors(errors, on_message);
    info.err = &errors.base;
    unsigned char* buffer = nullptr;
    unsigned long length = 0;
    const bool ok = run_compress(info, errors, image, buffer, length);
    std::vector<unsigned char> bytes;
    try {
        if (ok && buffer != nullptr)
            bytes.assign(buffer, buffer + length);
    } catch (const std::bad_alloc&) {
        bytes.clear();
    }
    std::free(buffer);
    return bytes;
}

} // namespace nimbit::graphics
