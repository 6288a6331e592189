#include "popup/BarePage.h"

#include "popup/PageStages.h"

namespace bench {

namespace {

WebKitWebContext* ourContext() {
    static WebKitWebContext* const context = [] {
        WebKitWebContext* made = webkit_web_context_new();
        webkit_web_context_set_cache_model(made, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
        return made;
    }();
    return context;
}

WebKitNetworkSession* ourSession() {
    static WebKitNetworkSession* const session = webkit_network_session_new_ephemeral();
    return session;
}

} // namespace

BarePage::BarePage(GtkOverlay* overlay, const std::string& url, std::string script, Engine engine)
    : overlay_(overlay), script_(std::move(script)) {
    WebKitUserContentManager* manager = webkit_user_content_manager_new();
    webkit_user_content_manager_register_script_message_handler(manager, "eventHandler", nullptr);
    g_signal_connect(manager, "script-message-received::eventHandler", G_CALLBACK(&BarePage::messageCame), this);
    view_ = WEBKIT_WEB_VIEW(engine == Engine::standard
                                ? g_object_new(WEBKIT_TYPE_WEB_VIEW, "user-content-manager", manager, nullptr)
                                : g_object_new(WEBKIT_TYPE_WEB_VIEW, "user-content-manager", manager, "web-context",
                                               ourContext(), "network-session", ourSession(), nullptr));
    g_object_unref(manager);
    g_signal_connect(view_, "load-changed", G_CALLBACK(&BarePage::loadChanged), this);
    gtk_widget_set_opacity(view(), 0);
    gtk_overlay_add_overlay(overlay_, view());
    webkit_web_view_load_uri(view_, url.c_str());
}

BarePage::~BarePage() {
    g_signal_handlers_disconnect_by_data(view_, this);
    g_signal_handlers_disconnect_by_data(webkit_web_view_get_user_content_manager(view_), this);
    gtk_overlay_remove_overlay(overlay_, view());
}

void BarePage::loadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer self) {
    if (event == WEBKIT_LOAD_FINISHED) {
        webkit_web_view_evaluate_javascript(view, static_cast<BarePage*>(self)->script_.c_str(), -1, nullptr, nullptr,
                                            nullptr, nullptr, nullptr);
    }
}

void BarePage::messageCame(WebKitUserContentManager*, JSCValue* message, gpointer self) {
    if (PageStages::isSize(message)) {
        gtk_widget_set_opacity(static_cast<BarePage*>(self)->view(), 1);
    }
}

} // namespace bench
