#include "tests/gtk/XTest.h"

#include <stdexcept>

#include <X11/Xlib.h>
#include <dlfcn.h>

namespace zentavo::tests {

// The extension's library comes with the screen's packages, its header does not.
XTest::XTest() : display_(XOpenDisplay(nullptr)), library_(dlopen("libXtst.so.6", RTLD_NOW)) {
    if (display_ == nullptr || library_ == nullptr) {
        throw std::runtime_error("no X display, or no libXtst.so.6");
    }
}

XTest::~XTest() {
    XCloseDisplay(display_);
    dlclose(library_);
}

template <class... Arguments>
void XTest::fake(const char* function, Arguments... arguments) const {
    constexpr unsigned long atOnce = 0;
    reinterpret_cast<int (*)(Display*, Arguments..., unsigned long)>(dlsym(library_, function))(display_, arguments...,
                                                                                                atOnce);
}

void XTest::move(int x, int y) const { fake("XTestFakeMotionEvent", -1, x, y); }
void XTest::button(bool down) const { fake("XTestFakeButtonEvent", 1U, down ? True : False); }
void XTest::key(unsigned code, bool down) const { fake("XTestFakeKeyEvent", code, down ? True : False); }

} // namespace zentavo::tests
