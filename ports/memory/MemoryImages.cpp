#include "ports/memory/MemoryImages.h"

#include <charconv>

#include "ports/memory/MemoryImage.h"

namespace zentavo::testing {

std::shared_ptr<const platform::Image> MemoryImages::decode(std::string_view file) {
    ++decoded_;
    constexpr std::string_view head = "IMAGE ";
    if (!file.starts_with(head)) {
        return nullptr;
    }
    file.remove_prefix(head.size());
    const char* const end = file.data() + file.size();
    int width = 0;
    int height = 0;
    const auto [cross, first] = std::from_chars(file.data(), end, width);
    if (first != std::errc() || cross == end || *cross != 'x') {
        return nullptr;
    }
    const auto [rest, second] = std::from_chars(cross + 1, end, height);
    if (second != std::errc() || rest != end || width < 1 || height < 1 ||
        static_cast<double>(width) * height > maximumPixels) {
        return nullptr;
    }
    return std::make_shared<MemoryImage>(platform::Size{static_cast<double>(width), static_cast<double>(height)});
}

} // namespace zentavo::testing
