#include "tests/gtk/Pointer.h"

#include <stdexcept>

#include <X11/Xlib.h>
#include <dlfcn.h>
#include <gdk/x11/gdkx.h>

namespace zentavo::tests {

// The extension's library comes with the screen's packages, its header does not.
Pointer::Pointer() : display_(XOpenDisplay(nullptr)), library_(dlopen("libXtst.so.6", RTLD_NOW)) {
    if (display_ == nullptr || library_ == nullptr) {
        throw std::runtime_error("no X display, or no libXtst.so.6");
    }
}

Pointer::~Pointer() {
    XCloseDisplay(static_cast<Display*>(display_));
    dlclose(library_);
}

void Pointer::drag(GtkWindow* window, double x, double y, double way) {
    auto* display = static_cast<Display*>(display_);
    const auto move =
        reinterpret_cast<int (*)(Display*, int, int, int, unsigned long)>(dlsym(library_, "XTestFakeMotionEvent"));
    const auto button =
        reinterpret_cast<int (*)(Display*, unsigned, int, unsigned long)>(dlsym(library_, "XTestFakeButtonEvent"));
    GdkSurface* surface = gtk_native_get_surface(reinterpret_cast<GtkNative*>(window));
    double left = 0;
    double top = 0;
    gtk_native_get_surface_transform(reinterpret_cast<GtkNative*>(window), &left, &top);
    int rootX = 0;
    int rootY = 0;
    ::Window child = 0;
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    XTranslateCoordinates(display, gdk_x11_surface_get_xid(surface), XDefaultRootWindow(display),
                          static_cast<int>(left + x), static_cast<int>(top + y), &rootX, &rootY, &child);
    G_GNUC_END_IGNORE_DEPRECATIONS
    move(display, -1, rootX, rootY, 0);
    button(display, 1, True, 0);
    constexpr int steps = 8;
    for (int i = 1; i <= steps && way != 0; ++i) {
        move(display, -1, rootX + static_cast<int>(way * i / steps), rootY, 0);
    }
    button(display, 1, False, 0);
    XSync(display, False);
}

} // namespace zentavo::tests
