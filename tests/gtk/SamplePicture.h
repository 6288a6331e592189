#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zentavo::tests {

/// Picture files made here, as PNG.
struct SamplePicture {
    /// Vertical bars of these colours (0xrrggbb), each as wide as the others.
    static std::string bars(int width, int height, const std::vector<std::uint32_t>& colours);
    /// Something to look at: sky, a sun and hills in the mood of `number`.
    static std::string landscape(int width, int height, int number);
    /// A five-pointed star in this colour, on nothing.
    static std::string star(int side, std::uint32_t colour, bool filled);
    /// The head of a file that announces a picture of this size; no more of it is there.
    static std::string announced(std::uint32_t width, std::uint32_t height);
};

} // namespace zentavo::tests
