#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/png_encoder.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <tuple>
#include <vector>

using namespace nimbit::graphics;

// Pixel fidelity through the toolkit is also checked by the bitmap round trips and the decode fuzzer.
TEST(ImageEncoders, PngKeepsEveryPixelOfPaddedRowsAndJpgKeepsFullColourResolution) {
    const int width = 38, height = 5; // rows end in a part of the filter's 16-byte step
    const size_t pitch = width * 4 + 12;
    std::vector<unsigned char> bytes(pitch * height, 0xEE); // the padding must never reach a file
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width * 4; ++x)
            bytes[y * pitch + x] = static_cast<unsigned char>(x * 7 + y * 31);
    const rgba_view view{bytes.data(), width, height, pitch};

    const std::vector<unsigned char> png = encode_png(view);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_memory(&image, png.data(), png.size()));
    image.format = PNG_FORMAT_RGBA;
    std::vector<unsigned char> decoded(PNG_IMAGE_SIZE(image));
    ASSERT_TRUE(png_image_finish_read(&image, nullptr, decoded.data(), 0, nullptr));
    for (int y = 0; y < height; ++y)
        EXPECT_TRUE(std::equal(decoded.begin() + y * width * 4, decoded.begin() + (y + 1) * width * 4,
                               bytes.begin() + y * pitch))
            << "row " << y;

    const std::vector<unsigned char> jpg = encode_jpg(view);
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, jpg.data(), static_cast<unsigned long>(jpg.size()));
    ASSERT_EQ(jpeg_read_header(&info, TRUE), JPEG_HEADER_OK);
    EXPECT_EQ(std::tuple(info.image_width, info.image_height, info.comp_info[1].h_samp_factor),
              std::tuple(JDIMENSION(width), JDIMENSION(height), 1));
    jpeg_destroy_decompress(&info);

    for (const rgba_view& empty : {rgba_view{}, rgba_view{bytes.data(), 0, 4, 16},
                                   rgba_view{bytes.data(), 4, 0, 16}, rgba_view{bytes.data(), 4, 4, 15}})
        EXPECT_TRUE(encode_png(empty).empty() && encode_jpg(empty).empty());
    EXPECT_TRUE(encode_jpg({bytes.data(), 70000, 1, 280000}).empty()); // beyond JPG's sides
}
