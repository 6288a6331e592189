#pragma once

#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include "popup/Stopwatch.h"

namespace bench {

/// Notes when a page gets where: its first bytes are there, it has loaded, it has said its size. Watches one page from
/// soon after it was made.
class PageStages {
public:
    explicit PageStages(WebKitWebView* view);
    ~PageStages();
    PageStages(const PageStages&) = delete;
    PageStages& operator=(const PageStages&) = delete;

    Moment made = now();
    Moment committed;
    Moment finished;
    Moment spoke;

    /// Whether a page says its size: it may say other things before, and finds its size out by laying itself out.
    static bool isSize(JSCValue* message);

private:
    static void loadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer self);
    static void messageCame(WebKitUserContentManager* manager, JSCValue* value, gpointer self);

    WebKitWebView* const view_;
};

} // namespace bench
