#include "ports/gtk/GtkImageView.h"

#include <algorithm>
#include <utility>

#include "ports/gtk/MainThread.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

GtkImageView::GtkImageView(std::shared_ptr<platform::MainQueue> mainQueue)
    : GtkView(std::move(mainQueue), GTK_ACCESSIBLE_ROLE_IMG) {
    canvas().setOnDraw([this](GtkSnapshot* snapshot, int width, int height) { draw(snapshot, width, height); });
}

void GtkImageView::setImage(std::shared_ptr<const platform::Image> image) {
    MainThread::require();
    texture_ = {};
    if (image) {
        const auto ours = std::dynamic_pointer_cast<const PixbufImage>(image);
        if (!ours) {
            fatalError("a picture of another toolkit cannot be shown here");
        }
        texture_ = ours->texture();
    }
    canvas().redraw();
}

void GtkImageView::setContentMode(platform::ContentMode mode) {
    MainThread::require();
    mode_ = mode;
    canvas().redraw();
}

void GtkImageView::draw(GtkSnapshot* snapshot, int width, int height) const {
    if (!texture_ || width <= 0 || height <= 0) {
        return;
    }
    const auto across = static_cast<double>(width);
    const auto down = static_cast<double>(height);
    const double pictureWidth = gdk_texture_get_width(texture_.get());
    const double pictureHeight = gdk_texture_get_height(texture_.get());
    const double fit = std::min(across / pictureWidth, down / pictureHeight);
    const double fill = std::max(across / pictureWidth, down / pictureHeight);
    const double scale = mode_ == platform::ContentMode::aspectFit ? fit : fill;
    const graphene_rect_t all{{0, 0}, {static_cast<float>(across), static_cast<float>(down)}};
    const graphene_rect_t place{{static_cast<float>((across - pictureWidth * scale) / 2),
                                 static_cast<float>((down - pictureHeight * scale) / 2)},
                                {static_cast<float>(pictureWidth * scale), static_cast<float>(pictureHeight * scale)}};
    gtk_snapshot_push_clip(snapshot, &all);
    gtk_snapshot_append_texture(snapshot, texture_.get(), &place);
    gtk_snapshot_pop(snapshot);
}

} // namespace zentavo::gtk
