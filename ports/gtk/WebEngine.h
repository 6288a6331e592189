#pragma once

#include <webkit/webkit.h>

namespace zentavo::gtk {

/// What all our web views of a process share, apart from the web views that the host may have. Pages leave nothing on
/// disk. Main thread only.
class WebEngine {
public:
    static WebKitWebContext* context();
    static WebKitNetworkSession* session();
    static WebKitSettings* settings();
};

} // namespace zentavo::gtk
