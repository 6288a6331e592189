#include "ports/gtk/Attach.h"

#include <memory>
#include <utility>

#include <gtk/gtk.h>

#include "ports/desktop/DesktopProcess.h"
#include "ports/gtk/GtkApplicationAnswers.h"
#include "ports/gtk/GtkMainQueue.h"
#include "ports/gtk/GtkViews.h"
#include "ports/gtk/GtkWebViews.h"
#include "ports/gtk/MainThread.h"
#include "ports/gtk/PixbufImages.h"
#include "ports/gtk/Ref.h"
#include "ports/gtk/WindowStage.h"
#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

namespace {

/// Whether the user is looking at a window of this process.
bool isInFront() {
    GListModel* windows = gtk_window_get_toplevels();
    bool active = false;
    for (guint i = 0; !active && i < g_list_model_get_n_items(windows); ++i) {
        const auto window = Ref<GtkWindow>::take(GTK_WINDOW(g_list_model_get_item(windows, i)));
        active = gtk_window_is_active(window.get()) != FALSE;
    }
    return active;
}

} // namespace

bool attach(GtkWindow* window) {
    const auto sdk = Zentavo::shared();
    return attach(window, *sdk);
}

bool attach(GtkWindow* window, Zentavo& sdk) {
    return entryPoint(
        "attach",
        [&] {
            platform::Platform& system = *sdk.state()->platform;
            if (window == nullptr || !gtk_is_initialized()) {
                system.systemLog->write(platform::LogLevel::warning,
                                        "No window is attached: there is none, or the toolkit is not initialised");
                return false;
            }
            MainThread::adopt();
            MainThread::require();
            // One for the process: a sandbox that cannot be made now cannot be made later either.
            static const auto probe = std::make_shared<WebSandboxProbe>();
            const auto queue = std::make_shared<GtkMainQueue>();
            platform::UserInterface interface = *system.userInterface();
            interface.mainQueue = queue;
            const auto stage = WindowStage::of(window);
            const auto& process = desktop::DesktopProcess::of(
                system, queue, {isInFront, [weak = std::weak_ptr(stage)](const std::string& activationToken) {
                                    if (const auto attached = weak.lock()) {
                                        attached->present(activationToken);
                                    }
                                }});
            interface.userNotifications = process.userNotifications();
            interface.application = std::make_shared<GtkApplicationAnswers>(system.systemLog, process);
            interface.views = std::make_shared<GtkViews>(queue, stage);
            interface.webViews = std::make_shared<GtkWebViews>(queue, system.systemLog, probe);
            interface.images = std::make_shared<PixbufImages>();
            system.attach(std::move(interface));
            return true;
        },
        false);
}

} // namespace zentavo::gtk
