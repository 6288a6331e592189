#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/Export.h"

namespace zentavo::platform {

/// Lengths are points from the top left corner of what holds the view.
struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0;
    double height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const Rect&, const Rect&) = default;
};

/// What the system keeps for itself at the edges of the screen.
struct Insets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
    friend bool operator==(const Insets&, const Insets&) = default;
};

/// Components from 0 to 1, not premultiplied.
struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const Colour&, const Colour&) = default;
};

enum class FontWeight { regular, medium, bold };

/// The user's own typeface in a size of points.
struct Font {
    double size = 15;
    FontWeight weight = FontWeight::regular;
    friend bool operator==(const Font&, const Font&) = default;
};

/// What the user has chosen for all programs.
enum class Appearance { light, dark };

enum class Swipe { left, right };

class ImageView;
class Label;

/// A rectangle on the screen that may hold others; those added later lie above. Main queue only, its destruction
/// included: a port asserts it. Held by `std::shared_ptr`; a view in a hierarchy is held by the view that holds it.
class ZENTAVO_EXPORT View {
public:
    virtual ~View() = default;

    /// Exactly so, whatever the view would like to be.
    virtual void setFrame(Rect frame) = 0;
    virtual Rect frame() const = 0;

    virtual void setHidden(bool hidden) = 0;
    virtual bool isHidden() const = 0;
    virtual void setBackground(Colour colour) = 0;
    /// Rounds the corners, and clips drawing and input to them.
    virtual void setCornerRadius(double radius) = 0;
    virtual double cornerRadius() const = 0;

    /// A view that lets taps through is as if it were not there for them: they reach what lies below.
    virtual void setTouchThrough(bool through) = 0;
    /// Called when the view is tapped or clicked, not when one above it is. Null takes it away. Users who have no pointer
    /// reach such a view as well, and press it with what their system has for that; where it lies over the window itself,
    /// behind what is to be reached, they do so with what dismisses things there.
    virtual void setOnTap(std::function<void()> onTap) = 0;
    /// Called when the view is pressed and the finger or pointer let go well to one side. Such a press is no tap.
    virtual void setOnSwipe(std::function<void(Swipe)> onSwipe) = 0;
    /// Called when the view, shown over a window, is so no more: it was taken down, or the window is gone. Never inside
    /// the call that does it. Null takes it away.
    virtual void setOnRemoved(std::function<void()> onRemoved) = 0;

    /// A view that is elsewhere in a hierarchy is moved.
    virtual void addSubview(std::shared_ptr<View> view) = 0;
    virtual void removeFromSuperview() = 0;
    virtual std::vector<std::shared_ptr<View>> subviews() const = 0;

    /// What the view is called for tests.
    virtual void setName(std::string name) = 0;
    /// What a user is told who cannot see it: the words on it, or what stands for them.
    virtual void setSpokenName(std::string name) = 0;
};

/// The screen, and the views over the host's window. Main queue only.
class ZENTAVO_EXPORT Views {
public:
    virtual ~Views() = default;

    /// The area that the host's window gives: frames of what is shown over it are within.
    virtual Rect mainScreenBounds() const = 0;
    virtual Insets safeAreaInsets() const = 0;

    virtual Appearance appearance() const = 0;
    /// Called after the bounds or the appearance have changed, never inside a call. One handler; null takes it away.
    virtual void setOnChange(std::function<void()> onChange) = 0;
    /// Calls `onResize` on the main queue whenever the bounds or the safe area are others, until what is returned is let
    /// go of: then not once more, also where a call was on its way. Never inside another call. Frames that fill the bounds
    /// may have been set anew by then; all others are the listeners' affair. They are told in the order in which they
    /// asked, and what they ask for has the newest values: of sizes that follow each other quickly some are left out.
    [[nodiscard]] virtual std::shared_ptr<const void> listenForResizes(std::function<void()> onResize) = 0;

    virtual std::shared_ptr<View> makeView() = 0;
    virtual std::shared_ptr<Label> makeLabel() = 0;
    virtual std::shared_ptr<ImageView> makeImageView() = 0;

    /// The room that a label takes for `text` when it may be `width` wide and have `lines` lines (0: any number), in
    /// whole points; no text takes none. A label of that size shows it.
    virtual Size textSize(const std::string& text, Font font, double width, int lines) const = 0;

    /// Puts `view` over everything in the host's window, without disturbing focus, text or layout below. False when
    /// there is no window to put it over.
    virtual bool showOverWindow(std::shared_ptr<View> view) = 0; // `removeFromSuperview` ends it

    /// `change` sets frames; they move there within `seconds`. At 0 at once. Then `done`, never inside the call.
    virtual void animate(double seconds, std::function<void()> change, std::function<void()> done = nullptr) = 0;
};

} // namespace zentavo::platform
