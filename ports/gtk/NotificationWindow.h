#pragma once

#include <functional>
#include <string>

#include <gtk/gtk.h>

#include "ports/gtk/Ref.h"
#include "ports/gtk/Signals.h"

namespace zentavo::gtk {

/// The window around a rich notification: a bar that says whose it is, and below it as much room as the content asks for.
/// The user cannot resize it. Main thread only; it is gone from the screen when this object is.
class NotificationWindow {
public:
    static constexpr int tallest = 640; ///< points of content

    struct Actions {
        std::function<void()> open;   ///< the button of the bar
        std::function<void()> closed; ///< by the user, also with the Escape key; the window is still there
    };

    /// Without `openLabel` there is no button.
    NotificationWindow(const std::string& title, const std::string& openLabel, int width, Actions actions);
    ~NotificationWindow();
    NotificationWindow(const NotificationWindow&) = delete;
    NotificationWindow& operator=(const NotificationWindow&) = delete;

    GtkWindow* window() const noexcept { return window_.get(); }
    void setContentHeight(double points);
    /// Shows it, in front of others where the desktop allows that.
    void present();

private:
    static gboolean closeRequested(GtkWindow* window, gpointer self);
    static gboolean keyPressed(GtkEventControllerKey* keys, guint key, guint code, GdkModifierType state,
                               gpointer self);
    static void openClicked(GtkButton* button, gpointer self);

    const int width_;
    const Actions actions_;
    const Ref<GtkWindow> window_;
    const Ref<GtkWidget> room_; ///< keeps the content's place
    Signals signals_;
};

} // namespace zentavo::gtk
