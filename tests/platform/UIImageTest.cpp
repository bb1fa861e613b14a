// Pictures as the image picker keeps them: every kind of PNG reads to the same RGBA pixels that
// stb_image makes of it, other formats read through stb_image, and a picture written as PNG reads
// back exactly, put into its sink a part at a time.

#include "platform/UIImage.h"

#include <png.h>
#include <stb_image.h>

#include <gtest/gtest.h>

#include <csetjmp>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

/// A PNG of width x height in the given colour type, bit depth and interlacing, its samples made
/// by sample(x, y, channel), written by libpng itself; a palette image gets a palette of 16 colours
/// and, with transparency, a tRNS chunk.
template <class Sample>
std::string makePng(int width, int height, int colorType, int depth, bool interlaced, bool transparency, Sample sample)
{
    std::string out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        ADD_FAILURE() << "libpng could not write the test picture";
        return {};
    }
    png_set_write_fn(
        png, &out, [](png_structp p, png_bytep data, png_size_t n) { static_cast<std::string*>(png_get_io_ptr(p))->append(reinterpret_cast<char*>(data), n); },
        nullptr);
    png_set_IHDR(png, info, width, height, depth, colorType, interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    int channels = 1;
    if (colorType == PNG_COLOR_TYPE_PALETTE) {
        std::vector<png_color> palette(16);
        for (int i = 0; i < 16; ++i)
            palette[i] = {static_cast<png_byte>(i * 16), static_cast<png_byte>(255 - i * 8), static_cast<png_byte>(i * 3)};
        png_set_PLTE(png, info, palette.data(), 16);
        if (transparency) {
            std::vector<png_byte> alpha{0, 64, 128, 200};
            png_set_tRNS(png, info, alpha.data(), static_cast<int>(alpha.size()), nullptr);
        }
    } else {
        channels = colorType == PNG_COLOR_TYPE_GRAY ? 1 : colorType == PNG_COLOR_TYPE_GRAY_ALPHA ? 2 : colorType == PNG_COLOR_TYPE_RGB ? 3 : 4;
        if (transparency) {
            png_color_16 key{};
            key.gray = 3;
            key.red = 3;
            key.green = 7;
            key.blue = 11;
            png_set_tRNS(png, info, nullptr, 0, &key);
        }
    }
    png_write_info(png, info);
    if (depth < 8)
        png_set_packing(png);
    if (depth == 16)
        png_set_swap(png);  // the samples below are in the machine's order
    const int bytesPerSample = depth == 16 ? 2 : 1;
    std::vector<png_byte> image(static_cast<std::size_t>(width) * height * channels * bytesPerSample);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                unsigned value = sample(x, y, c) & ((1u << depth) - 1);
                std::size_t at = ((static_cast<std::size_t>(y) * width + x) * channels + c) * bytesPerSample;
                if (depth == 16) {
                    std::uint16_t wide = static_cast<std::uint16_t>(value);
                    std::memcpy(&image[at], &wide, 2);
                } else {
                    image[at] = static_cast<png_byte>(value);
                }
            }
    std::vector<png_bytep> rows(height);
    for (int y = 0; y < height; ++y)
        rows[y] = image.data() + static_cast<std::size_t>(y) * width * channels * bytesPerSample;
    png_write_image(png, rows.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return out;
}

/// What stb_image makes of bytes, as 8-bit RGBA.
std::vector<std::uint8_t> stbPixels(const std::string& bytes, int& width, int& height)
{
    int channels = 0;
    stbi_uc* pixels = stbi_load_from_memory(reinterpret_cast<const stbi_uc*>(bytes.data()), static_cast<int>(bytes.size()),
                                            &width, &height, &channels, 4);
    if (!pixels)
        return {};
    std::vector<std::uint8_t> copy(pixels, pixels + static_cast<std::size_t>(width) * height * 4);
    stbi_image_free(pixels);
    return copy;
}

}  // namespace

TEST(UIImage, EveryKindOfPngReadsAsStbImageReadsIt)
{
    auto sample = [](int x, int y, int c) { return static_cast<unsigned>(x * 37 + y * 101 + c * 59 + x * y); };
    struct Kind {
        const char* name;
        int colorType, depth;
        bool transparency;
    };
    const Kind kinds[] = {
        {"grey 1 bit", PNG_COLOR_TYPE_GRAY, 1, false},       {"grey 4 bits", PNG_COLOR_TYPE_GRAY, 4, false},
        {"grey 8 bits", PNG_COLOR_TYPE_GRAY, 8, false},      {"grey 8 bits, keyed", PNG_COLOR_TYPE_GRAY, 8, true},
        {"grey 16 bits", PNG_COLOR_TYPE_GRAY, 16, false},    {"grey and alpha", PNG_COLOR_TYPE_GRAY_ALPHA, 8, false},
        {"grey and alpha 16", PNG_COLOR_TYPE_GRAY_ALPHA, 16, false}, {"RGB", PNG_COLOR_TYPE_RGB, 8, false},
        {"RGB, keyed", PNG_COLOR_TYPE_RGB, 8, true},         {"RGB 16 bits", PNG_COLOR_TYPE_RGB, 16, false},
        {"RGBA", PNG_COLOR_TYPE_RGBA, 8, false},             {"RGBA 16 bits", PNG_COLOR_TYPE_RGBA, 16, false},
        {"palette 4 bits", PNG_COLOR_TYPE_PALETTE, 4, false}, {"palette 8 bits, tRNS", PNG_COLOR_TYPE_PALETTE, 8, true},
    };
    for (const Kind& kind : kinds)
        for (bool interlaced : {false, true}) {
            SCOPED_TRACE(std::string(kind.name) + (interlaced ? ", interlaced" : ""));
            auto paletteSample = [&](int x, int y, int c) { return kind.colorType == PNG_COLOR_TYPE_PALETTE ? sample(x, y, c) % 16 : sample(x, y, c); };
            std::string bytes = makePng(13, 11, kind.colorType, kind.depth, interlaced, kind.transparency, paletteSample);
            ASSERT_FALSE(bytes.empty());
            int width = 0, height = 0;
            std::vector<std::uint8_t> expected = stbPixels(bytes, width, height);
            ASSERT_EQ(expected.size(), 13u * 11u * 4u);
            auto image = UIImage::imageWithData(bytes);
            ASSERT_TRUE(image);
            EXPECT_EQ(image->width(), 13);
            EXPECT_EQ(image->height(), 11);
            EXPECT_EQ(std::vector<std::uint8_t>(image->rgba().begin(), image->rgba().end()), expected);
        }
}

TEST(UIImage, APngCutShortOrDamagedIsNoPicture)
{
    std::string bytes = makePng(64, 64, PNG_COLOR_TYPE_RGB, 8, false, false, [](int x, int y, int c) { return static_cast<unsigned>(x ^ y ^ c); });
    EXPECT_TRUE(UIImage::imageWithData(bytes));
    for (std::size_t size : {std::size_t{8}, std::size_t{40}, bytes.size() / 2, bytes.size() - 13})
        EXPECT_FALSE(UIImage::imageWithData(bytes.substr(0, size))) << size;
    std::string damaged = bytes;
    damaged[damaged.size() / 2] ^= 0x55;  // inside the compressed rows: their checksum fails
    EXPECT_FALSE(UIImage::imageWithData(damaged));
}

TEST(UIImage, AWrittenPictureReadsBackExactlyAndComesAPartAtATime)
{
    // Noise compresses badly: the PNG is larger than one part of the sink.
    const int width = 700, height = 600;
    std::vector<std::uint8_t> rgba(static_cast<std::size_t>(width) * height * 4);
    std::uint32_t state = 12345;
    for (auto& byte : rgba) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    UIImage picture(width, height, rgba);
    std::vector<std::size_t> parts;
    std::string png;
    ASSERT_TRUE(UIImageWritePNG(picture, [&](std::string_view part) {
        parts.push_back(part.size());
        png.append(part);
        return true;
    }));
    EXPECT_GT(parts.size(), 1u);
    for (std::size_t part : parts)
        EXPECT_LE(part, (1u << 20) + 65536u);
    EXPECT_EQ(png, UIImagePNGRepresentation(picture));
    auto back = UIImage::imageWithData(png);
    ASSERT_TRUE(back);
    EXPECT_EQ(std::vector<std::uint8_t>(back->rgba().begin(), back->rgba().end()), rgba);

    // A sink that refuses stops the writing, and the writer says so.
    int calls = 0;
    EXPECT_FALSE(UIImageWritePNG(picture, [&](std::string_view) {
        ++calls;
        return false;
    }));
    EXPECT_EQ(calls, 1);
}

TEST(UIImage, OtherFormatsReadThroughStbImage)
{
    // A 2 x 1 BMP (24 bits, rows bottom-up, padded to 4 bytes): blue, then red.
    const unsigned char bmp[] = {'B', 'M', 62, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 40, 0, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 1, 0,
                                 24, 0, 0, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 0,
                                 255, 0, 0};
    auto image = UIImage::imageWithData(std::string_view(reinterpret_cast<const char*>(bmp), sizeof bmp));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width(), 2);
    EXPECT_EQ(std::vector<std::uint8_t>(image->rgba().begin(), image->rgba().end()),
              (std::vector<std::uint8_t>{0, 0, 255, 255, 255, 0, 0, 255}));
}
