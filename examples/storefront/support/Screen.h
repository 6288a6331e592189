#pragma once

#include <optional>
#include <string>
#include <vector>

namespace storefront {

/// An X screen as somebody sees it who sits in front of it: pictures of what is there, whichever program drew it, and a
/// pointer. For a screen of one's own, without a window manager.
class Screen {
public:
    struct Area {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
    };
    struct Picture {
        Area area; ///< what of the screen it shows
        /// Red, green and blue, line by line; none when it could not be taken.
        std::vector<unsigned char> pixels;

        /// As a PNG file; false when there is no such place.
        bool save(const std::string& file) const;
    };

    /// Throws std::runtime_error where there is no screen or no way to move the pointer.
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// Paints what is behind all windows.
    void paintBackdrop();
    /// Where the window with this title is, frame included; none while it is not to be seen.
    std::optional<Area> window(const std::string& title) const;
    void moveWindow(const std::string& title, int x, int y);
    /// Asks its program to close it.
    void closeWindow(const std::string& title);
    /// Presses and lets go at a point of the screen.
    void click(int x, int y);
    /// The screen, or what of `part` is on it.
    Picture look(std::optional<Area> part = std::nullopt) const;

private:
    unsigned long find(const std::string& title) const;

    void* display_;
    void* pointer_; ///< the library for it
};

} // namespace storefront
