#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

#include <gtk/gtk.h>

namespace zentavo::tests {

/// What a pixel shows, each component from 0 to 255.
struct Pixel {
    int red = 0;
    int green = 0;
    int blue = 0;
    friend bool operator==(const Pixel&, const Pixel&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Pixel& pixel) {
        return out << "rgb(" << pixel.red << ", " << pixel.green << ", " << pixel.blue << ")";
    }
};

/// A window as it looks now.
class Picture {
public:
    explicit Picture(GtkWindow* window);

    int width() const noexcept { return width_; }
    int height() const noexcept { return height_; }
    /// Black where there is no picture.
    Pixel at(int x, int y) const;

private:
    int width_ = 0;
    int height_ = 0;
    std::vector<std::uint8_t> bytes_;
};

} // namespace zentavo::tests
