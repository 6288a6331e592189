#pragma once

#include <gtk/gtk.h>

#include "tests/gtk/XTest.h"

namespace zentavo::tests {

/// The screen's pointer in the test's hand: real events, through the X server.
class Pointer {
public:
    /// Presses and lets go at a point of the window.
    void click(GtkWindow* window, double x, double y) { drag(window, x, y, 0); }
    /// Lets go `way` further right than it pressed.
    void drag(GtkWindow* window, double x, double y, double way);

private:
    XTest events_;
};

} // namespace zentavo::tests
