#include "platform/UIImage.h"

#include "platform/NSFileManager.h"
#include "platform/Process.h"

#include <stb_image.h>
#include <stb_image_write.h>

#include <climits>

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

std::filesystem::path resourceImage(std::string_view name)
{
    return Process::current().resourcesDirectory() / (std::string(name) + ".png");
}

}  // namespace

UIImage::UIImage(int width, int height, std::vector<std::uint8_t> rgba)
    : _width(width)
    , _height(height)
    , _rgba(std::move(rgba))
{
}

std::shared_ptr<UIImage> UIImage::imageWithData(std::string_view bytes)
{
    if (!declaredSize(bytes))
        return nullptr;
    int width = 0, height = 0, channels = 0;
    auto data = reinterpret_cast<const stbi_uc*>(bytes.data());
    stbi_uc* pixels = stbi_load_from_memory(data, static_cast<int>(bytes.size()), &width, &height, &channels, 4);
    if (!pixels)
        return nullptr;
    std::vector<std::uint8_t> rgba(pixels, pixels + static_cast<std::size_t>(width) * height * 4);
    stbi_image_free(pixels);
    return std::make_shared<UIImage>(width, height, std::move(rgba));
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

std::string UIImagePNGRepresentation(const UIImage& image)
{
    std::string png;
    auto append = [](void* context, void* data, int size) {
        static_cast<std::string*>(context)->append(static_cast<const char*>(data), static_cast<std::size_t>(size));
    };
    if (!stbi_write_png_to_func(append, &png, image.width(), image.height(), 4, image.rgba().data(), image.width() * 4))
        return {};
    return png;
}
