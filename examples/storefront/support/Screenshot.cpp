#include "examples/storefront/support/Screenshot.h"

namespace storefront {

GdkTexture* screenshot(GtkWindow* window) {
    auto* widget = reinterpret_cast<GtkWidget*>(window);
    const int width = gtk_widget_get_width(widget);
    const int height = gtk_widget_get_height(widget);
    GskRenderer* renderer = gtk_native_get_renderer(reinterpret_cast<GtkNative*>(window));
    if (renderer == nullptr || width <= 0 || height <= 0) {
        return nullptr;
    }
    GdkPaintable* picture = gtk_widget_paintable_new(widget);
    GtkSnapshot* snapshot = gtk_snapshot_new();
    gdk_paintable_snapshot(picture, snapshot, width, height);
    GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
    g_object_unref(picture);
    if (node == nullptr) {
        return nullptr;
    }
    const graphene_rect_t all{{0, 0}, {static_cast<float>(width), static_cast<float>(height)}};
    GdkTexture* texture = gsk_renderer_render_texture(renderer, node, &all);
    gsk_render_node_unref(node);
    return texture;
}

bool saveScreenshot(GtkWindow* window, const std::string& path) {
    GdkTexture* texture = screenshot(window);
    if (texture == nullptr) {
        return false;
    }
    const bool saved = gdk_texture_save_to_png(texture, path.c_str());
    g_object_unref(texture);
    return saved;
}

} // namespace storefront
