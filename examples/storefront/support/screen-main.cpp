// A hand and an eye for a screen that nobody sits at.
//
//     zentavo-screen backdrop                     paints what is behind all windows
//     zentavo-screen await TITLE                  waits until a window with this title is to be seen
//     zentavo-screen gone TITLE                   waits until there is none
//     zentavo-screen move TITLE X Y
//     zentavo-screen close TITLE                  as its own button does
//     zentavo-screen click TITLE X Y              a point of the window; below 0: counted from its other end
//     zentavo-screen picture FILE [TITLE]         of the screen, or of a window

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <thread>
#include <vector>

#include "examples/storefront/support/Screen.h"

namespace {

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

bool act(storefront::Screen& screen, const std::vector<std::string>& words) {
    const std::string& verb = words.at(0);
    if (verb == "backdrop") {
        screen.paintBackdrop();
        return true;
    }
    if (verb == "picture") {
        return screen.savePicture(words.at(1), words.size() > 2 ? screen.window(words[2]) : std::nullopt);
    }
    const std::string& title = words.at(1);
    if (verb == "await" || verb == "gone") {
        return eventually([&] { return screen.window(title).has_value() == (verb == "await"); });
    }
    const auto area = screen.window(title);
    if (!area) {
        return false;
    }
    if (verb == "close") {
        screen.closeWindow(title);
        return true;
    }
    if (verb != "move" && verb != "click") {
        return false;
    }
    const int x = std::atoi(words.at(2).c_str());
    const int y = std::atoi(words.at(3).c_str());
    if (verb == "move") {
        screen.moveWindow(title, x, y);
    } else {
        screen.click(area->x + (x < 0 ? area->width : 0) + x, area->y + (y < 0 ? area->height : 0) + y);
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    try {
        storefront::Screen screen;
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
