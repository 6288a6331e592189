#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "zentavo/platform/Image.h"

namespace zentavo::testing {

/// A picture of which only the size is known.
class ZENTAVO_EXPORT MemoryImage final : public platform::Image {
public:
    explicit MemoryImage(platform::Size size) : size_(size) {}

    /// The file of a picture as `MemoryImages` reads it: "IMAGE 640x480".
    static std::string file(int width, int height) {
        return "IMAGE " + std::to_string(width) + "x" + std::to_string(height);
    }

    platform::Size size() const override { return size_; }
    std::size_t bytes() const override {
        return static_cast<std::size_t>(size_.width) * static_cast<std::size_t>(size_.height) * 4;
    }
    std::shared_ptr<const platform::Image> resized(platform::Size size) const override {
        return std::make_shared<MemoryImage>(platform::Size{std::max(1.0, size.width), std::max(1.0, size.height)});
    }

private:
    platform::Size size_;
};

} // namespace zentavo::testing
