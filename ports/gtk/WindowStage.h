#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtk/gtk.h>

#include "ports/gtk/GtkView.h"

namespace zentavo::gtk {

/// What lies over one window of the host: an overlay around the window's own child, and on it the views. The window
/// holds its stage; a stage whose window is gone shows nothing. Main thread only, but whoever holds it may let go of it
/// anywhere.
class WindowStage {
public:
    /// The stage of `window`; made at the first call, which puts the overlay in place.
    static std::shared_ptr<WindowStage> of(GtkWindow* window);

    explicit WindowStage(GtkWindow* window);
    ~WindowStage();
    WindowStage(const WindowStage&) = delete;
    WindowStage& operator=(const WindowStage&) = delete;

    /// The window's content area; before its first layout the size that it asks for.
    platform::Rect bounds() const;
    /// Brings the window to the front; `activationToken` shows the desktop that the user wants it, and may be empty.
    /// Nothing where the window is gone.
    void present(const std::string& activationToken);
    /// Puts `view` on top. False when the window is gone or not open.
    bool show(GtkView& view);
    /// To be called before a view is hidden or removed: where it has the focus, another control in the view around it gets
    /// it, as the next of a row of pages; else what had it before.
    static void giveFocusBack(GtkWidget* leaving);
    /// By the colour that the user's theme gives text.
    platform::Appearance appearance() const;
    /// Called inside the toolkit's work when bounds or theme have changed.
    void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }
    /// Called inside the toolkit's work when the bounds have changed, as long as somebody holds `onResize`.
    void listenForResizes(const std::shared_ptr<std::function<void()>>& onResize);
    /// The widget on which everything stands.
    GtkWidget* root() const noexcept { return root_.widget(); }

private:
    static void childChanged(GObject* window, GParamSpec* property, gpointer self);
    static void themeChanged(GObject* settings, GParamSpec* property, gpointer self);
    static void destroyed(GtkWidget* window, gpointer self);
    /// The Escape key is a tap on the topmost of the views that can be tapped.
    static gboolean keyPressed(GtkEventControllerKey* keys, guint pressed, guint code, GdkModifierType state,
                               gpointer self);
    void wrapChild();
    void resized(int width, int height);
    void close();

    GtkWindow* window_; ///< null once it is gone
    const Ref<GtkWidget> overlay_;
    Canvas root_;
    platform::Size size_;
    std::shared_ptr<GtkView::Children> shown_ = std::make_shared<GtkView::Children>();
    std::function<void()> onChange_;
    std::vector<std::weak_ptr<std::function<void()>>> onResize_;
    Signals signals_;
    bool wrapping_ = false;
    GWeakRef hostFocus_; ///< what had the focus before one of our views got it
};

} // namespace zentavo::gtk
