#pragma once

#include <gtk/gtk.h>

namespace zentavo::tests {

/// The screen's pointer in the test's hand: real events, through the X server.
class Pointer {
public:
    Pointer();
    ~Pointer();
    Pointer(const Pointer&) = delete;
    Pointer& operator=(const Pointer&) = delete;

    /// Presses and lets go at a point of the window.
    void click(GtkWindow* window, double x, double y) { drag(window, x, y, 0); }
    /// Lets go `way` further right than it pressed.
    void drag(GtkWindow* window, double x, double y, double way);

private:
    void* display_;
    void* library_;
};

} // namespace zentavo::tests
