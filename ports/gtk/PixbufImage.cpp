#include "ports/gtk/PixbufImage.h"

#include <algorithm>
#include <cmath>

namespace zentavo::gtk {

namespace {

int side(double points) {
    constexpr double longest = 16384;
    return std::isfinite(points) ? static_cast<int>(std::clamp(std::round(points), 1.0, longest)) : 1;
}

} // namespace

std::shared_ptr<const platform::Image> PixbufImage::resized(platform::Size size) const {
    // This way of scaling looks at every pixel: fine lines do not flicker away.
    auto scaled = Ref<GdkPixbuf>::take(
        gdk_pixbuf_scale_simple(pixbuf_.get(), side(size.width), side(size.height), GDK_INTERP_BILINEAR));
    return scaled ? std::make_shared<PixbufImage>(std::move(scaled)) : std::make_shared<PixbufImage>(pixbuf_);
}

} // namespace zentavo::gtk
