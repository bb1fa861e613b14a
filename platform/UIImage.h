#pragma once
// UIImage: decoded pixels (8-bit RGBA), held in one buffer. PNG is read and written with libpng a
// row at a time, so that decoding or encoding a picture takes its pixels and a few rows of memory,
// never a second copy of the image; other formats (JPEG, GIF, BMP, ...) are read with stb_image,
// whose buffer is kept as it is.

#include "platform/AtomicFile.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
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
    /// Pixels made by malloc (width * height * 4 bytes), owned from now on.
    UIImage(int width, int height, std::uint8_t* mallocedRgba);

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
    std::span<const std::uint8_t> rgba() const { return {_rgba.get(), static_cast<std::size_t>(_width) * _height * 4}; }

private:
    struct Free {
        void operator()(std::uint8_t* pixels) const { std::free(pixels); }
    };
    int _width;
    int _height;
    std::unique_ptr<std::uint8_t[], Free> _rgba;
};

/// UIImagePNGRepresentation: the image as PNG bytes, at full size ("" when it cannot be encoded).
std::string UIImagePNGRepresentation(const UIImage& image);
/// The same PNG bytes put into a sink as they are made, a row at a time (at most 1 MiB of them
/// held at once); false when it cannot be encoded or the sink refused a part.
bool UIImageWritePNG(const UIImage& image, const AtomicFile::Sink& put);
