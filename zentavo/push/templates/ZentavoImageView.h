#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "zentavo/push/templates/ZentavoImageViewComponents.h"

namespace zentavo {

class ImageLoader;

/// Shows a picture of the net, and until it is there a plain surface. Held by `std::shared_ptr`; lets taps through.
/// Main queue only.
class ZENTAVO_EXPORT ZentavoImageView : public std::enable_shared_from_this<ZentavoImageView> {
public:
    enum class State { empty, loading, shown, missing };

    ZentavoImageView(platform::Views& views, std::shared_ptr<ImageLoader> loader);

    const ZentavoImageViewComponents components;
    const std::shared_ptr<platform::View>& view() const noexcept { return components.container; }

    /// Begins to show the picture at `url`; one that is at hand shows at once, and that is all. Otherwise `ended` is
    /// called when it shows or is known not to come, but not when another was asked for meanwhile. Empty text is no
    /// picture.
    void load(const std::string& url, std::function<void()> ended);
    State state() const noexcept { return state_; }
    /// In pixels; nothing before the picture is there.
    platform::Size imageSize() const noexcept { return size_; }

    void setFrame(platform::Rect frame);
    void setContentMode(platform::ContentMode mode) { components.picture->setContentMode(mode); }
    /// The surface until the picture is there.
    void setPlaceholder(platform::Colour colour);

private:
    void show(std::shared_ptr<const platform::Image> image);
    void paint();

    const std::shared_ptr<ImageLoader> loader_;
    State state_ = State::empty;
    platform::Size size_;
    platform::Colour placeholder_{0, 0, 0, 0};
    std::uint64_t loads_ = 0;
};

} // namespace zentavo
