#include "examples/storefront/support/Screen.h"

#include <algorithm>
#include <stdexcept>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <dlfcn.h>
#include <gtk/gtk.h>

namespace storefront {

namespace {

Display* of(void* display) { return static_cast<Display*>(display); }

std::string titleOf(Display* display, ::Window window) {
    const Atom utf8 = XInternAtom(display, "UTF8_STRING", False);
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* text = nullptr;
    XGetWindowProperty(display, window, XInternAtom(display, "_NET_WM_NAME", False), 0, 256, False, utf8, &type,
                       &format, &count, &left, &text);
    std::string title = text != nullptr ? std::string(reinterpret_cast<char*>(text), count) : "";
    XFree(text);
    return title;
}

} // namespace

// The extension's library comes with the screen's packages, its header does not.
Screen::Screen() : display_(XOpenDisplay(nullptr)), pointer_(dlopen("libXtst.so.6", RTLD_NOW)) {
    if (display_ == nullptr || pointer_ == nullptr) {
        throw std::runtime_error("no X display, or no libXtst.so.6");
    }
    // A window may go while it is looked at.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
}

Screen::~Screen() {
    XCloseDisplay(of(display_));
    dlclose(pointer_);
}

void Screen::paintBackdrop() {
    Display* display = of(display_);
    const int screen = DefaultScreen(display);
    const int width = DisplayWidth(display, screen);
    const int height = DisplayHeight(display, screen);
    const ::Window root = DefaultRootWindow(display);
    const Pixmap picture = XCreatePixmap(display, root, static_cast<unsigned>(width), static_cast<unsigned>(height),
                                         static_cast<unsigned>(DefaultDepth(display, screen)));
    GC pen = XCreateGC(display, picture, 0, nullptr);
    for (int y = 0; y < height; ++y) {
        // An evening sky: from deep blue to a warm grey.
        const auto mix = [&](int top, int bottom) {
            return static_cast<unsigned long>(top + (bottom - top) * y / std::max(height - 1, 1));
        };
        XSetForeground(display, pen, mix(0x24, 0xb9) << 16U | mix(0x3b, 0xa9) << 8U | mix(0x5a, 0xa6));
        XDrawLine(display, picture, pen, 0, y, width, y);
    }
    XSetWindowBackgroundPixmap(display, root, picture);
    XClearWindow(display, root);
    XFreeGC(display, pen);
    XFreePixmap(display, picture);
    XSync(display, False);
}

unsigned long Screen::find(const std::string& title) const {
    Display* display = of(display_);
    ::Window root = 0;
    ::Window parent = 0;
    ::Window* children = nullptr;
    unsigned count = 0;
    XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count);
    ::Window found = 0;
    for (unsigned i = count; i-- > 0 && found == 0;) { // from the top
        XWindowAttributes attributes{};
        if (XGetWindowAttributes(display, children[i], &attributes) != 0 && attributes.map_state == IsViewable &&
            titleOf(display, children[i]) == title) {
            found = children[i];
        }
    }
    XFree(children);
    return found;
}

std::optional<Screen::Area> Screen::window(const std::string& title) const {
    const ::Window window = find(title);
    XWindowAttributes attributes{};
    if (window == 0 || XGetWindowAttributes(of(display_), window, &attributes) == 0) {
        return std::nullopt;
    }
    return Area{attributes.x, attributes.y, attributes.width, attributes.height};
}

void Screen::moveWindow(const std::string& title, int x, int y) {
    if (const ::Window window = find(title)) {
        XMoveWindow(of(display_), window, x, y);
        XSync(of(display_), False);
    }
}

void Screen::closeWindow(const std::string& title) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = find(title);
    event.xclient.message_type = XInternAtom(of(display_), "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(of(display_), "WM_DELETE_WINDOW", False));
    XSendEvent(of(display_), event.xclient.window, False, NoEventMask, &event);
    XSync(of(display_), False);
}

void Screen::click(int x, int y) {
    const auto move =
        reinterpret_cast<int (*)(Display*, int, int, int, unsigned long)>(dlsym(pointer_, "XTestFakeMotionEvent"));
    const auto button =
        reinterpret_cast<int (*)(Display*, unsigned, int, unsigned long)>(dlsym(pointer_, "XTestFakeButtonEvent"));
    move(of(display_), -1, x, y, 0);
    button(of(display_), 1, True, 0);
    button(of(display_), 1, False, 0);
    XSync(of(display_), False);
}

Screen::Picture Screen::look(std::optional<Area> part) const {
    Display* display = of(display_);
    const int screen = DefaultScreen(display);
    const Area all{0, 0, DisplayWidth(display, screen), DisplayHeight(display, screen)};
    Area area = part.value_or(all);
    area.x = std::clamp(area.x, 0, all.width - 1);
    area.y = std::clamp(area.y, 0, all.height - 1);
    area.width = std::clamp(area.width, 1, all.width - area.x);
    area.height = std::clamp(area.height, 1, all.height - area.y);
    Picture picture{area, {}};
    XImage* image = XGetImage(display, DefaultRootWindow(display), area.x, area.y, static_cast<unsigned>(area.width),
                              static_cast<unsigned>(area.height), AllPlanes, ZPixmap);
    if (image == nullptr) {
        return picture;
    }
    picture.pixels.reserve(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height) * 3);
    for (int y = 0; y < area.height; ++y) {
        for (int x = 0; x < area.width; ++x) {
            const unsigned long pixel = XGetPixel(image, x, y);
            for (const unsigned shift : {16U, 8U, 0U}) {
                picture.pixels.push_back(static_cast<unsigned char>(pixel >> shift));
            }
        }
    }
    XDestroyImage(image);
    return picture;
}

bool Screen::Picture::save(const std::string& file) const {
    if (pixels.empty()) {
        return false;
    }
    GBytes* bytes = g_bytes_new(pixels.data(), pixels.size());
    GdkTexture* texture =
        gdk_memory_texture_new(area.width, area.height, GDK_MEMORY_R8G8B8, bytes, static_cast<gsize>(area.width) * 3);
    const bool saved = gdk_texture_save_to_png(texture, file.c_str()) != FALSE;
    g_object_unref(texture);
    g_bytes_unref(bytes);
    return saved;
}

} // namespace storefront
