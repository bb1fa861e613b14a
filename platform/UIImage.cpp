#include "platform/UIImage.h"

#include "platform/NSFileManager.h"
#include "platform/Process.h"

#include <png.h>
#include <stb_image.h>

#include <algorithm>
#include <climits>
#include <csetjmp>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t kMaximumImageFileSize = 64 << 20;
constexpr int kMaximumSide = 16384;

// The size an image's header declares, when it is within the limits decoding accepts.
std::optional<UIImage::Size> declaredSize(std::string_view bytes)
{
    if (bytes.empty() || bytes.size() > INT_MAX)
        return std::nullopt;
    int width = 0, height = 0, channels = 0;
    if (!stbi_info_from_memory(reinterpret_cast<const stbi_uc*>(bytes.data()), static_cast<int>(bytes.size()), &width,
                               &height, &channels) ||
        width <= 0 || height <= 0 || width > kMaximumSide || height > kMaximumSide)
        return std::nullopt;
    return UIImage::Size{width, height};
}

// libpng reports errors by a long jump back to the setjmp of the function that called it (no
// C++ object of the functions in between is left behind), and says nothing on standard error.
[[noreturn]] void pngError(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

void pngWarning(png_structp, png_const_charp) {}

struct PngInput {
    const unsigned char* data;
    std::size_t size;
    std::size_t at;
};

void readPng(png_structp png, png_bytep out, png_size_t length)
{
    auto* input = static_cast<PngInput*>(png_get_io_ptr(png));
    if (length > input->size - input->at)
        png_error(png, "the picture ends early");
    std::memcpy(out, input->data + input->at, length);
    input->at += length;
}

/// A PNG decoded a row at a time straight into one malloc'd buffer of 8-bit RGBA, as stb_image
/// reads one (a palette, grey, fewer bits and transparency expanded, 16 bits cut to their high
/// byte, an opaque alpha added); nullptr when the bytes are no PNG that can be read.
std::uint8_t* decodePng(std::string_view bytes, int& width, int& height)
{
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, pngError, pngWarning);
    if (!png)
        return nullptr;
    png_infop info = png_create_info_struct(png);
    if (!info) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        return nullptr;
    }
    PngInput input{reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), 0};
    std::uint8_t* volatile pixels = nullptr;
    if (setjmp(png_jmpbuf(png))) {
        std::free(pixels);
        png_destroy_read_struct(&png, &info, nullptr);
        return nullptr;
    }
    png_set_read_fn(png, &input, readPng);
    png_read_info(png, info);
    const png_uint_32 w = png_get_image_width(png, info), h = png_get_image_height(png, info);
    const int type = png_get_color_type(png, info);
    if (w == 0 || h == 0 || w > static_cast<png_uint_32>(kMaximumSide) || h > static_cast<png_uint_32>(kMaximumSide))
        png_error(png, "the picture's size is out of bounds");
    png_set_expand(png);
    png_set_strip_16(png);
    if (type == PNG_COLOR_TYPE_GRAY || type == PNG_COLOR_TYPE_GRAY_ALPHA)
        png_set_gray_to_rgb(png);
    png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    const std::size_t stride = static_cast<std::size_t>(w) * 4;
    if (png_get_rowbytes(png, info) != stride)
        png_error(png, "the picture's rows are not RGBA");
    pixels = static_cast<std::uint8_t*>(std::malloc(stride * h));
    if (!pixels)
        png_error(png, "no memory for the picture");
    // An interlaced picture's passes each fill their pixels of the rows in place.
    for (int pass = 0; pass < passes; ++pass)
        for (png_uint_32 y = 0; y < h; ++y)
            png_read_row(png, pixels + stride * y, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    width = static_cast<int>(w);
    height = static_cast<int>(h);
    return pixels;
}

/// What a PNG being written goes to: the sink, in parts of at most kPart bytes.
struct PngOutput {
    static constexpr std::size_t kPart = 1 << 20;
    const AtomicFile::Sink* put;
    std::string part;
    bool refused = false;

    bool flush()
    {
        refused = refused || !(*put)(part);
        part.clear();
        return !refused;
    }
};

void writePng(png_structp png, png_bytep data, png_size_t length)
{
    auto* output = static_cast<PngOutput*>(png_get_io_ptr(png));
    output->part.append(reinterpret_cast<const char*>(data), length);
    if (output->part.size() >= PngOutput::kPart && !output->flush())
        png_error(png, "the picture could not be stored");
}

void flushPng(png_structp) {}

std::filesystem::path resourceImage(std::string_view name)
{
    return Process::current().resourcesDirectory() / (std::string(name) + ".png");
}

}  // namespace

UIImage::UIImage(int width, int height, std::vector<std::uint8_t> rgba)
    : _width(width)
    , _height(height)
{
    const std::size_t size = static_cast<std::size_t>(std::max(width, 0)) * static_cast<std::size_t>(std::max(height, 0)) * 4;
    rgba.resize(size);
    _rgba.reset(static_cast<std::uint8_t*>(std::malloc(std::max<std::size_t>(size, 1))));
    if (!_rgba)
        throw std::bad_alloc();
    if (size > 0)
        std::memcpy(_rgba.get(), rgba.data(), size);
}

UIImage::UIImage(int width, int height, std::uint8_t* mallocedRgba)
    : _width(width)
    , _height(height)
    , _rgba(mallocedRgba)
{
}

std::shared_ptr<UIImage> UIImage::imageWithData(std::string_view bytes)
{
    if (!declaredSize(bytes))
        return nullptr;
    int width = 0, height = 0, channels = 0;
    static constexpr std::string_view signature("\x89PNG\r\n\x1a\n", 8);
    if (bytes.starts_with(signature)) {
        std::uint8_t* pixels = decodePng(bytes, width, height);
        return pixels ? std::make_shared<UIImage>(width, height, pixels) : nullptr;
    }
    // stb_image's buffer comes from malloc (STBI_MALLOC), kept as the image's own.
    auto data = reinterpret_cast<const stbi_uc*>(bytes.data());
    stbi_uc* pixels = stbi_load_from_memory(data, static_cast<int>(bytes.size()), &width, &height, &channels, 4);
    if (!pixels)
        return nullptr;
    return std::make_shared<UIImage>(width, height, pixels);
}

std::shared_ptr<UIImage> UIImage::imageWithContentsOfFile(const std::filesystem::path& path)
{
    auto bytes = AtomicFile::read(path, kMaximumImageFileSize);
    return bytes ? imageWithData(*bytes) : nullptr;
}

std::shared_ptr<UIImage> UIImage::imageNamed(std::string_view name)
{
    return imageWithContentsOfFile(resourceImage(name));
}

std::optional<UIImage::Size> UIImage::sizeOfImageNamed(std::string_view name)
{
    auto bytes = AtomicFile::read(resourceImage(name), kMaximumImageFileSize);
    return bytes ? declaredSize(*bytes) : std::nullopt;
}

bool UIImageWritePNG(const UIImage& image, const AtomicFile::Sink& put)
{
    if (image.width() <= 0 || image.height() <= 0)
        return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, pngError, pngWarning);
    if (!png)
        return false;
    png_infop info = png_create_info_struct(png);
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        return false;
    }
    PngOutput output{&put, {}, false};
    output.part.reserve(PngOutput::kPart + (64 << 10));
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_set_write_fn(png, &output, writePng, flushPng);
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.width()), static_cast<png_uint_32>(image.height()), 8,
                 PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    const std::size_t stride = static_cast<std::size_t>(image.width()) * 4;
    const std::uint8_t* rows = image.rgba().data();
    for (int y = 0; y < image.height(); ++y)
        png_write_row(png, rows + stride * static_cast<std::size_t>(y));
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return output.flush();
}

std::string UIImagePNGRepresentation(const UIImage& image)
{
    std::string png;
    bool written = UIImageWritePNG(image, [&png](std::string_view part) {
        png.append(part);
        return true;
    });
    return written ? png : std::string();
}
