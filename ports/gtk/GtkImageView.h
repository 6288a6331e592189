#pragma once

#include <memory>

#include "ports/gtk/GtkView.h"
#include "ports/gtk/PixbufImage.h"
#include "zentavo/platform/ImageView.h"

namespace zentavo::gtk {

/// A picture on a canvas of its own.
class GtkImageView final : public GtkView, public platform::ImageView {
public:
    explicit GtkImageView(std::shared_ptr<platform::MainQueue> mainQueue);

    void setImage(std::shared_ptr<const platform::Image> image) override;
    void setContentMode(platform::ContentMode mode) override;

private:
    void draw(GtkSnapshot* snapshot, int width, int height) const;

    Ref<GdkTexture> texture_;
    platform::ContentMode mode_ = platform::ContentMode::aspectFit;
};

} // namespace zentavo::gtk
