#pragma once

#include <memory>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gdk/gdk.h>

#include "ports/gtk/Ref.h"
#include "zentavo/platform/Image.h"

namespace zentavo::gtk {

/// A picture in the processor's memory. Any thread.
class PixbufImage final : public platform::Image {
public:
    explicit PixbufImage(Ref<GdkPixbuf> pixbuf) : pixbuf_(std::move(pixbuf)) {}

    platform::Size size() const override {
        return {static_cast<double>(gdk_pixbuf_get_width(pixbuf_.get())),
                static_cast<double>(gdk_pixbuf_get_height(pixbuf_.get()))};
    }
    std::size_t bytes() const override { return gdk_pixbuf_get_byte_length(pixbuf_.get()); }
    std::shared_ptr<const platform::Image> resized(platform::Size size) const override;

    /// For drawing; shares the picture's bytes.
    Ref<GdkTexture> texture() const { return Ref<GdkTexture>::take(gdk_texture_new_for_pixbuf(pixbuf_.get())); }

private:
    const Ref<GdkPixbuf> pixbuf_;
};

} // namespace zentavo::gtk
