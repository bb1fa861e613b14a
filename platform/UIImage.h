#pragma once
// UIImage: decoded pixels (8-bit RGBA). Images are read with stb_image (PNG, JPEG, GIF, BMP, ...)
// and encoded as PNG with stb_image_write.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class UIImage {
public:
    /// An image's size in pixels.
    struct Size {
        int width = 0;
        int height = 0;
    };

    UIImage(int width, int height, std::vector<std::uint8_t> rgba);

    /// The image in a file of this machine, or nullptr when it cannot be decoded.
    static std::shared_ptr<UIImage> imageWithContentsOfFile(const std::filesystem::path& path);
    /// The image in encoded bytes, or nullptr.
    static std::shared_ptr<UIImage> imageWithData(std::string_view bytes);
    /// The bundle's resource image name ("icons/NIMHeader" -> icons/NIMHeader.png), or nullptr.
    static std::shared_ptr<UIImage> imageNamed(std::string_view name);
    /// The size of the bundle's resource image name, read from the file's header without decoding
    /// its pixels; nothing when the file is missing or is no image imageNamed could decode the size
    /// of (the same size limits apply).
    static std::optional<Size> sizeOfImageNamed(std::string_view name);

    int width() const { return _width; }
    int height() const { return _height; }
    const std::vector<std::uint8_t>& rgba() const { return _rgba; }

private:
    int _width;
    int _height;
    std::vector<std::uint8_t> _rgba;
};

/// UIImagePNGRepresentation: the image as PNG bytes, at full size ("" when it cannot be encoded).
std::string UIImagePNGRepresentation(const UIImage& image);
