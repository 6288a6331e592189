#include "tests/gtk/Keyboard.h"

#include <X11/Xlib.h>
#include <gdk/x11/gdkx.h>

namespace zentavo::tests {

void Keyboard::press(GtkWindow* window, unsigned key) {
    // There is no window manager that would give it the keys.
    GdkSurface* surface = gtk_native_get_surface(reinterpret_cast<GtkNative*>(window));
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    XSetInputFocus(events_.display(), gdk_x11_surface_get_xid(surface), RevertToParent, CurrentTime);
    G_GNUC_END_IGNORE_DEPRECATIONS
    const unsigned code = XKeysymToKeycode(events_.display(), key);
    events_.key(code, true);
    events_.key(code, false);
    XSync(events_.display(), False);
}

} // namespace zentavo::tests
