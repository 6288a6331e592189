#include "ports/gtk/WebEngine.h"

namespace zentavo::gtk {

// All three are kept until the process ends: a view may still be on its way then.

WebKitWebContext* WebEngine::context() {
    static WebKitWebContext* const context = [] {
        WebKitWebContext* made = webkit_web_context_new();
        // A message is read once; what is kept for going back would only cost memory.
        webkit_web_context_set_cache_model(made, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
        return made;
    }();
    return context;
}

WebKitNetworkSession* WebEngine::session() {
    static WebKitNetworkSession* const session = [] {
        WebKitNetworkSession* made = webkit_network_session_new_ephemeral();
        g_signal_connect_data(made, "download-started",
                              reinterpret_cast<GCallback>(+[](WebKitNetworkSession*, WebKitDownload* download,
                                                              gpointer) { webkit_download_cancel(download); }),
                              nullptr, nullptr, static_cast<GConnectFlags>(0));
        return made;
    }();
    return session;
}

WebKitSettings* WebEngine::settings() {
    static WebKitSettings* const settings = [] {
        WebKitSettings* made = webkit_settings_new();
        webkit_settings_set_enable_fullscreen(made, FALSE); // it would be the host's window
        webkit_settings_set_enable_page_cache(made, FALSE);
        webkit_settings_set_enable_media_stream(made, FALSE);
        webkit_settings_set_enable_developer_extras(made, FALSE);
        return made;
    }();
    return settings;
}

} // namespace zentavo::gtk
