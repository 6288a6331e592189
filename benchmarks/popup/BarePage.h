#pragma once

#include <functional>
#include <string>

#include <gtk/gtk.h>
#include <webkit/webkit.h>

namespace bench {

/// The least that shows a campaign: a web view over the window that loads the page, runs the script and is seen once the
/// page has said its size. What this takes is the engine's own time.
class BarePage {
public:
    /// The engine as it comes, or as the SDK sets it up: kept apart from the host's, without memory of earlier pages.
    enum class Engine { standard, likeOurs };

    BarePage(GtkOverlay* overlay, const std::string& url, std::string script, Engine engine);
    ~BarePage();
    BarePage(const BarePage&) = delete;
    BarePage& operator=(const BarePage&) = delete;

    GtkWidget* view() const { return GTK_WIDGET(view_); }

private:
    static void loadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer self);
    static void messageCame(WebKitUserContentManager* manager, JSCValue* value, gpointer self);

    GtkOverlay* const overlay_;
    const std::string script_;
    WebKitWebView* view_ = nullptr;
};

} // namespace bench
