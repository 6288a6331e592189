// A hand and an eye for a screen that nobody sits at.
//
//     zentavo-screen backdrop                     paints what is behind all windows
//     zentavo-screen await TITLE                  waits until a window with this title is to be seen
//     zentavo-screen gone TITLE                   waits until there is none
//     zentavo-screen move TITLE X Y
//     zentavo-screen close TITLE                  as its own button does
//     zentavo-screen click TITLE X Y              a point of the window; below 0: counted from its other end
//     zentavo-screen shows TITLE X Y RRGGBB       waits until that point of the window has about this colour
//     zentavo-screen picture FILE [TITLE]         of the screen, or of a window, once it holds still

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "examples/storefront/support/Screen.h"

namespace {

using storefront::Screen;

bool eventually(const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

/// Where the words 2 and 3 point to in the window that is word 1.
std::optional<Screen::Area> pointOf(const Screen& screen, const std::vector<std::string>& words) {
    const auto window = screen.window(words.at(1));
    if (!window) {
        return std::nullopt;
    }
    const int x = std::atoi(words.at(2).c_str());
    const int y = std::atoi(words.at(3).c_str());
    return Screen::Area{window->x + (x < 0 ? window->width : 0) + x, window->y + (y < 0 ? window->height : 0) + y, 1,
                        1};
}

/// What is written as RRGGBB, but for what drawing and scaling do to it.
bool isAbout(const Screen::Picture& point, const std::string& colour) {
    const unsigned long wanted = std::stoul(colour, nullptr, 16);
    for (std::size_t i = 0; i < point.pixels.size(); ++i) {
        const int part = static_cast<int>(wanted >> (16 - 8 * i) & 0xFFU);
        if (std::abs(part - point.pixels[i]) > 12) {
            return false;
        }
    }
    return !point.pixels.empty();
}

/// The last of so many looks at the screen that were all the same. What never stops is taken as it is.
Screen::Picture takePicture(const Screen& screen, std::optional<Screen::Area> part) {
    constexpr int enough = 12; // looks, 20 ms apart and more
    Screen::Picture picture = screen.look(part);
    int same = 0;
    eventually([&] {
        Screen::Picture now = screen.look(part);
        same = now.pixels == picture.pixels ? same + 1 : 0;
        picture = std::move(now);
        return same == enough;
    });
    return picture;
}

bool act(Screen& screen, const std::vector<std::string>& words) {
    const std::string& verb = words.at(0);
    if (verb == "backdrop") {
        screen.paintBackdrop();
        return true;
    }
    if (verb == "picture") {
        const bool all = words.size() == 2;
        const auto part = all ? std::nullopt : screen.window(words[2]);
        return (all || part) && takePicture(screen, part).save(words.at(1));
    }
    const std::string& title = words.at(1);
    if (verb == "shows") {
        return eventually([&] {
            const auto point = pointOf(screen, words);
            return point && isAbout(screen.look(point), words.at(4));
        });
    }
    if (verb == "await" || verb == "gone") {
        return eventually([&] { return screen.window(title).has_value() == (verb == "await"); });
    }
    if (!screen.window(title)) {
        return false;
    }
    if (verb == "close") {
        screen.closeWindow(title);
    } else if (verb == "move") {
        screen.moveWindow(title, std::atoi(words.at(2).c_str()), std::atoi(words.at(3).c_str()));
    } else if (const auto point = verb == "click" ? pointOf(screen, words) : std::nullopt) {
        screen.click(point->x, point->y);
    } else {
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    try {
        Screen screen;
        if (act(screen, words)) {
            return 0;
        }
        std::fprintf(stderr, "zentavo-screen: it was not to be done:");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zentavo-screen: %s:", error.what());
    }
    for (const std::string& word : words) {
        std::fprintf(stderr, " %s", word.c_str());
    }
    std::fprintf(stderr, "\n");
    return 1;
}
