#include "ports/gtk/PixbufImages.h"

#include <algorithm>

#include "ports/gtk/PixbufImage.h"

namespace zentavo::gtk {

namespace {

/// The loader calls this before it makes room for the picture.
void sizePrepared(GdkPixbufLoader* loader, int width, int height, gpointer tooLarge) {
    if (static_cast<double>(width) * height > platform::Images::maximumPixels) {
        *static_cast<bool*>(tooLarge) = true;
        gdk_pixbuf_loader_set_size(loader, 0, 0); // nothing is decoded
    }
}

} // namespace

std::shared_ptr<const platform::Image> PixbufImages::decode(std::string_view file) {
    const auto loader = Ref<GdkPixbufLoader>::take(gdk_pixbuf_loader_new());
    bool tooLarge = false;
    g_signal_connect_data(loader.get(), "size-prepared", reinterpret_cast<GCallback>(&sizePrepared), &tooLarge, nullptr,
                          static_cast<GConnectFlags>(0));
    bool good = true;
    for (std::size_t from = 0; from < file.size() && good && !tooLarge;) {
        constexpr std::size_t piece = 16384;
        const std::size_t length = std::min(piece, file.size() - from);
        good =
            gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(file.data()) + from, length, nullptr);
        from += length;
    }
    // Always to be closed; for a file cut short this is where it shows.
    good = gdk_pixbuf_loader_close(loader.get(), nullptr) && good && !tooLarge;
    GdkPixbuf* picture = good ? gdk_pixbuf_loader_get_pixbuf(loader.get()) : nullptr;
    if (picture == nullptr) {
        return nullptr;
    }
    // Cameras turn their pictures by a note in the file.
    auto upright = Ref<GdkPixbuf>::take(gdk_pixbuf_apply_embedded_orientation(picture));
    return upright ? std::make_shared<PixbufImage>(std::move(upright)) : nullptr;
}

} // namespace zentavo::gtk
