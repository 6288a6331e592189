#include "ports/gtk/GtkWebViews.h"

#include <utility>

#include "ports/gtk/GtkWebView.h"
#include "ports/gtk/MainThread.h"

namespace zentavo::gtk {

GtkWebViews::GtkWebViews(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<platform::SystemLog> log,
                         std::shared_ptr<WebSandboxProbe> probe)
    : mainQueue_(std::move(mainQueue)), log_(std::move(log)), probe_(std::move(probe)) {}

std::shared_ptr<platform::WebView> GtkWebViews::makeWebView() {
    MainThread::require();
    if (const auto& problem = probe_->problem()) {
        if (!std::exchange(told_, true)) {
            log_->write(platform::LogLevel::warning, "In-app messages cannot be shown: " + *problem);
        }
        return nullptr;
    }
    return std::make_shared<GtkWebView>(mainQueue_);
}

} // namespace zentavo::gtk
