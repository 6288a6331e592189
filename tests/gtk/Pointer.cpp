#include "tests/gtk/Pointer.h"

#include <X11/Xlib.h>
#include <gdk/x11/gdkx.h>

namespace zentavo::tests {

void Pointer::drag(GtkWindow* window, double x, double y, double way) {
    GdkSurface* surface = gtk_native_get_surface(reinterpret_cast<GtkNative*>(window));
    double left = 0;
    double top = 0;
    gtk_native_get_surface_transform(reinterpret_cast<GtkNative*>(window), &left, &top);
    int rootX = 0;
    int rootY = 0;
    ::Window child = 0;
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    XTranslateCoordinates(events_.display(), gdk_x11_surface_get_xid(surface), XDefaultRootWindow(events_.display()),
                          static_cast<int>(left + x), static_cast<int>(top + y), &rootX, &rootY, &child);
    G_GNUC_END_IGNORE_DEPRECATIONS
    events_.move(rootX, rootY);
    events_.button(true);
    constexpr int steps = 8;
    for (int i = 1; i <= steps && way != 0; ++i) {
        events_.move(rootX + static_cast<int>(way * i / steps), rootY);
    }
    events_.button(false);
    XSync(events_.display(), False);
}

} // namespace zentavo::tests
