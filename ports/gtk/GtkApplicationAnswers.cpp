#include "ports/gtk/GtkApplicationAnswers.h"

#include <memory>
#include <string>
#include <utility>

#include <gtk/gtk.h>

#include "ports/gtk/MainThread.h"
#include "ports/gtk/Ref.h"

namespace zentavo::gtk {

namespace {

struct Opening {
    std::shared_ptr<platform::SystemLog> log;
    std::string url;

    void failed(const char* why) const { log->write(platform::LogLevel::warning, "Not opened: " + url + ": " + why); }
};

} // namespace

GtkApplicationAnswers::GtkApplicationAnswers(std::shared_ptr<platform::SystemLog> log,
                                             const desktop::DesktopProcess& process)
    : log_(std::move(log)), process_(process) {}

void GtkApplicationAnswers::registerForRemoteNotifications() { process_.registerForRemoteNotifications(); }

void GtkApplicationAnswers::open(const URL& url) {
    MainThread::require();
    auto opening = std::make_unique<Opening>(Opening{log_, url.text()});
    if (url.scheme().empty() || url.scheme() == "file") {
        return opening->failed("it is nothing to open");
    }
    GdkDisplay* display = gdk_display_get_default();
    const auto context = Ref<GAppLaunchContext>::take(
        display != nullptr ? reinterpret_cast<GAppLaunchContext*>(gdk_display_get_app_launch_context(display))
                           : nullptr);
    g_app_info_launch_default_for_uri_async(
        url.text().c_str(), context.get(), nullptr,
        [](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Opening> done(static_cast<Opening*>(data));
            GError* error = nullptr;
            if (!g_app_info_launch_default_for_uri_finish(result, &error)) {
                done->failed(error->message);
                g_clear_error(&error);
            }
        },
        opening.release());
}

} // namespace zentavo::gtk
