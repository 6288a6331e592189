#pragma once

#include <gtk/gtk.h>

#include "tests/gtk/XTest.h"

namespace zentavo::tests {

/// The screen's keyboard in the test's hand: real events, through the X server.
class Keyboard {
public:
    /// Presses and lets go of a key of gdk/gdkkeysyms.h in the window.
    void press(GtkWindow* window, unsigned key);

private:
    XTest events_;
};

} // namespace zentavo::tests
