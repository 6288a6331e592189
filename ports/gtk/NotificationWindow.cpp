#include "ports/gtk/NotificationWindow.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

namespace {

constexpr int firstHeight = 240; // until the content says what it needs

} // namespace

NotificationWindow::NotificationWindow(const std::string& title, const std::string& openLabel, int width,
                                       Actions actions)
    : width_(std::max(width, 1)), actions_(std::move(actions)),
      window_(Ref<GtkWindow>::share(reinterpret_cast<GtkWindow*>(gtk_window_new()))),
      room_(Ref<GtkWidget>::share(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0))) {
    gtk_window_set_title(window(), title.c_str());
    gtk_window_set_default_size(window(), width_, -1);
    // Such a window is as large as its child needs it, whatever the window manager remembers or the user drags.
    gtk_window_set_resizable(window(), FALSE);
    gtk_widget_set_name(reinterpret_cast<GtkWidget*>(window()), "zentavo.notification");
    gtk_window_set_child(window(), room_.get());
    setContentHeight(firstHeight);

    GtkWidget* bar = gtk_header_bar_new();
    gtk_header_bar_set_decoration_layout(reinterpret_cast<GtkHeaderBar*>(bar), ":close");
    if (!openLabel.empty()) {
        GtkWidget* button = gtk_button_new_with_label(openLabel.c_str());
        gtk_widget_set_name(button, "zentavo.notification.open");
        gtk_widget_add_css_class(button, "suggested-action");
        gtk_header_bar_pack_start(reinterpret_cast<GtkHeaderBar*>(bar), button);
        signals_.connect(button, "clicked", &NotificationWindow::openClicked, this);
    }
    gtk_window_set_titlebar(window(), bar);

    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    signals_.connect(keys, "key-pressed", &NotificationWindow::keyPressed, this);
    gtk_widget_add_controller(reinterpret_cast<GtkWidget*>(window()), keys);
    signals_.connect(window(), "close-request", &NotificationWindow::closeRequested, this);
}

NotificationWindow::~NotificationWindow() {
    signals_.clear();
    gtk_window_destroy(window());
}

void NotificationWindow::setContentHeight(double points) {
    const int height =
        std::isfinite(points) ? static_cast<int>(std::clamp(std::ceil(points), 1.0, double{tallest})) : 1;
    gtk_widget_set_size_request(room_.get(), width_, height);
}

void NotificationWindow::present() { gtk_window_present(window()); }

gboolean NotificationWindow::closeRequested(GtkWindow*, gpointer self) {
    entryPoint("notification window", [&] { static_cast<NotificationWindow*>(self)->actions_.closed(); });
    return TRUE; // whoever has this object ends it
}

gboolean NotificationWindow::keyPressed(GtkEventControllerKey*, guint key, guint, GdkModifierType, gpointer self) {
    if (key != GDK_KEY_Escape) {
        return FALSE;
    }
    gtk_window_close(static_cast<NotificationWindow*>(self)->window());
    return TRUE;
}

void NotificationWindow::openClicked(GtkButton*, gpointer self) {
    entryPoint("notification window", [&] { static_cast<NotificationWindow*>(self)->actions_.open(); });
}

} // namespace zentavo::gtk
