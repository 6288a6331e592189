#pragma once

#include <memory>

#include "ports/gtk/WebSandboxProbe.h"
#include "zentavo/platform/MainQueue.h"
#include "zentavo/platform/SystemLog.h"
#include "zentavo/platform/WebView.h"

namespace zentavo::gtk {

/// Makes web views, where the engine can lock its processes up.
class GtkWebViews final : public platform::WebViews {
public:
    GtkWebViews(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<platform::SystemLog> log,
                std::shared_ptr<WebSandboxProbe> probe);

    std::shared_ptr<platform::WebView> makeWebView() override;

private:
    const std::shared_ptr<platform::MainQueue> mainQueue_;
    const std::shared_ptr<platform::SystemLog> log_;
    const std::shared_ptr<WebSandboxProbe> probe_;
    bool told_ = false;
};

} // namespace zentavo::gtk
