#pragma once

#include <functional>

#include <gtk/gtk.h>

#include "ports/gtk/Ref.h"
#include "zentavo/platform/Views.h"

namespace zentavo::gtk {

/// The widget of a view: a filled rectangle whose children stand exactly where their own frames say. It asks for no
/// space, so the host's layout does not know it. Children of other kinds fill it. Main thread only.
class Canvas {
public:
    Canvas();
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    GtkWidget* widget() const noexcept { return widget_.get(); }

    /// Where it stands in the canvas that holds it, on whole pixels.
    void setFrame(platform::Rect frame);
    /// As `setFrame`, while the canvas around it is being laid out.
    void takeFrame(platform::Rect frame);
    void setBackground(platform::Colour colour);
    void setCornerRadius(double radius);
    /// Not to be found by the pointer, as if it were not there; its children are.
    void setTouchThrough(bool through);

    /// On top of the children that are there.
    void add(GtkWidget* child);
    void remove();

    /// Called to draw over the background, under the children. To be told when what it draws has changed: `redraw`.
    void setOnDraw(std::function<void(GtkSnapshot* snapshot, int width, int height)> onDraw);
    void redraw();

    /// Called with each new size, before the children are laid out.
    void setOnResize(std::function<void(int width, int height)> onResize);

    /// What it is for accessibility tools. On screen it stays what it was: the toolkit takes no other there.
    void setRole(GtkAccessibleRole role);
    /// Makes it a stop of the Tab key, which Enter, Space and accessibility tools press. A user who moves by keys sees a
    /// ring around it. Null takes it away.
    void setOnPress(std::function<void()> onPress);
    /// Called for the arrow keys to the sides while it has the focus. Null leaves them to what is around.
    void setOnArrow(std::function<void(GtkDirectionType side)> onArrow);

private:
    const Ref<GtkWidget> widget_;
    Ref<GtkCssProvider> style_;
    std::function<void(int, int)> onResize_;
    std::function<void(GtkSnapshot*, int, int)> onDraw_;
    std::function<void()> onPress_;
    std::function<void(GtkDirectionType)> onArrow_;
};

} // namespace zentavo::gtk
