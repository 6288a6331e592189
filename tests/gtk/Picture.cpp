#include "tests/gtk/Picture.h"

#include "examples/storefront/support/Screenshot.h"

namespace zentavo::tests {

Picture::Picture(GtkWindow* window) {
    GdkTexture* texture = storefront::screenshot(window);
    if (texture == nullptr) {
        return;
    }
    width_ = gdk_texture_get_width(texture);
    height_ = gdk_texture_get_height(texture);
    const auto stride = static_cast<std::size_t>(width_) * 4;
    bytes_.resize(stride * static_cast<std::size_t>(height_));
    gdk_texture_download(texture, bytes_.data(), stride);
    g_object_unref(texture);
}

Pixel Picture::at(int x, int y) const {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) {
        return {};
    }
    // The toolkit's default format: blue, green, red, alpha in memory.
    const std::uint8_t* pixel =
        &bytes_[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)) * 4];
    return {pixel[2], pixel[1], pixel[0]};
}

} // namespace zentavo::tests
