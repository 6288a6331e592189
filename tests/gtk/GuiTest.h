#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "ports/memory/MemoryPlatform.h"
#include "tests/gtk/Keyboard.h"
#include "tests/gtk/Picture.h"
#include "tests/gtk/Pointer.h"
#include "zentavo/Zentavo.h"

namespace zentavo::tests {

/// Runs the toolkit's loop until `done` says so, for some seconds at most; true when it did.
bool until(const std::function<bool()>& done);
/// Runs what the loop has to do now, and a frame.
void settle(GtkWindow* window);

/// A window of 400 x 300 with a blue label in it, and the SDK of a memory platform attached to it.
class GuiTest : public ::testing::Test {
protected:
    GuiTest();
    ~GuiTest() override;

    /// Shows the window and waits for its first frame.
    void present();
    void closeWindow();
    const std::shared_ptr<const platform::UserInterface>& interface();
    platform::Views& views() { return *interface()->views; }
    std::shared_ptr<platform::View> view(platform::Rect frame, platform::Colour colour,
                                         const std::shared_ptr<platform::View>& around = nullptr);
    /// The name of what has the focus, or "".
    std::string focus() const;
    /// Waits as `until` does, and lets the SDK's worker run meanwhile.
    bool eventually(const std::function<bool()>& done);
    /// Waits until the pixel looks like that, and says how it looks.
    Pixel pixel(int x, int y, Pixel expected);
    Pixel pixel(int x, int y) { return Picture(window).at(x, y); }
    void click(double x, double y) { pointer.click(window, x, y); }
    /// Presses a key in the window, and waits until it has done there what it does.
    void press(unsigned key);

    static constexpr Pixel background{0, 0, 255};
    static constexpr platform::Colour red{1, 0, 0, 1};
    static constexpr platform::Colour green{0, 1, 0, 1};
    static constexpr Pixel redPixel{255, 0, 0};
    static constexpr Pixel greenPixel{0, 255, 0};

    GtkWindow* window; ///< null once it is closed
    GtkWidget* content;
    testing::MemoryPlatform memory;
    std::shared_ptr<Zentavo> sdk;
    Pointer pointer;
    Keyboard keyboard;

private:
    std::shared_ptr<const platform::UserInterface> interface_;
};

} // namespace zentavo::tests
