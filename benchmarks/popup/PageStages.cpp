#include "popup/PageStages.h"

namespace bench {

PageStages::PageStages(WebKitWebView* view) : view_(static_cast<WebKitWebView*>(g_object_ref(view))) {
    g_signal_connect(view, "load-changed", G_CALLBACK(&PageStages::loadChanged), this);
    g_signal_connect(webkit_web_view_get_user_content_manager(view), "script-message-received::eventHandler",
                     G_CALLBACK(&PageStages::messageCame), this);
}

PageStages::~PageStages() {
    g_signal_handlers_disconnect_by_data(view_, this);
    g_signal_handlers_disconnect_by_data(webkit_web_view_get_user_content_manager(view_), this);
    g_object_unref(view_);
}

void PageStages::loadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer self) {
    auto& stages = *static_cast<PageStages*>(self);
    if (event == WEBKIT_LOAD_COMMITTED) {
        stages.committed = now();
    } else if (event == WEBKIT_LOAD_FINISHED) {
        stages.finished = now();
    }
}

bool PageStages::isSize(JSCValue* message) {
    JSCValue* type = jsc_value_object_get_property(message, "type");
    char* text = jsc_value_to_string(type);
    const bool is = g_strcmp0(text, "zentavo-cdp-campaign-size") == 0;
    g_free(text);
    g_object_unref(type);
    return is;
}

void PageStages::messageCame(WebKitUserContentManager*, JSCValue* message, gpointer self) {
    auto& stages = *static_cast<PageStages*>(self);
    if (stages.spoke == Moment() && isSize(message)) {
        stages.spoke = now();
    }
}

} // namespace bench
