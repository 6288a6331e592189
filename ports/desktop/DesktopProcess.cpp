#include "ports/desktop/DesktopProcess.h"

#include <string>
#include <utility>

#include "ports/desktop/AppEndpoint.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo::desktop {

/// The host's; another host may come and bring its own.
class DesktopProcess::Windows {
public:
    explicit Windows(AppWindows windows) : windows_(std::move(windows)) {}

    void replace(AppWindows windows) {
        MutexLock lock(mutex_);
        std::swap(windows_, windows);
        lock.unlock();
    }
    AppWindows get() {
        MutexLock lock(mutex_);
        return windows_;
    }

private:
    Mutex mutex_;
    AppWindows windows_ ZENTAVO_GUARDED_BY(mutex_);
};

namespace {

/// Of an extension none: it is not to answer in the app's place.
std::optional<BusNames> namesOfApp(const platform::Bundle& program) {
    auto names = BusNames::of(program);
    return names && names->app == program.identifier() ? names : std::nullopt;
}

std::shared_ptr<FreedesktopUserNotifications> makeNotifications(std::shared_ptr<SessionBus> bus,
                                                                const platform::Platform& system,
                                                                std::shared_ptr<platform::MainQueue> mainQueue,
                                                                AppWindows windows) {
    const auto program = system.bundles->main();
    FreedesktopUserNotifications::Parts parts{
        std::move(bus),
        std::move(mainQueue),
        system.queues->make("zentavo.attachments", platform::QueueKind::serial),
        system.attachmentFiles,
        AppOnDesktop::of(*program),
    };
    if (const auto names = namesOfApp(*program)) {
        parts.notificationService = names->notificationService;
        parts.suite = std::make_shared<NotificationSuite>(system.preferences, names->app, NotificationSuite::Side::app);
    }
    parts.isInFront = std::move(windows.isInFront);
    parts.comeToFront = std::move(windows.comeToFront);
    return FreedesktopUserNotifications::make(std::move(parts));
}

} // namespace

DesktopProcess::DesktopProcess(std::shared_ptr<SessionBus> bus, std::shared_ptr<RemoteNotifications> remote,
                               const platform::Platform& system, std::shared_ptr<platform::MainQueue> mainQueue,
                               AppWindows windows)
    : log_(system.systemLog), remote_(std::move(remote)), windows_(std::make_shared<Windows>(std::move(windows))),
      names_(namesOfApp(*system.bundles->main())),
      notifications_(makeNotifications(bus, system, mainQueue,
                                       {.isInFront =
                                            [windows = windows_] {
                                                const auto current = windows->get();
                                                return current.isInFront && current.isInFront();
                                            },
                                        .comeToFront =
                                            [windows = windows_](const std::string& token) {
                                                if (const auto current = windows->get(); current.comeToFront) {
                                                    current.comeToFront(token);
                                                }
                                            }})),
      service_(bus, names_ ? names_->notificationService : "") {
    remote_->setMainQueue(std::move(mainQueue));
    if (names_) {
        AppEndpoint::open(*bus, *names_, notifications_, remote_, log_);
    } else if (!BusNames::of(*system.bundles->main())) {
        log_->write(platform::LogLevel::info, "No pushes, and no clicks that start the app: the program has no bundle "
                                              "identifier that can be a name on the message bus");
    }
}

DesktopProcess& DesktopProcess::of(const platform::Platform& system, std::shared_ptr<platform::MainQueue> mainQueue,
                                   AppWindows windows) {
    // For ever: the bus's thread may be at work while the process exits.
    static auto& only =
        *new DesktopProcess(std::make_shared<SessionBus>(), RemoteNotifications::shared(), system, mainQueue, windows);
    only.notifications_->setMainQueue(mainQueue);
    only.remote_->setMainQueue(std::move(mainQueue));
    only.windows_->replace(std::move(windows));
    return only;
}

void DesktopProcess::registerForRemoteNotifications() const {
    service_.registerForPushes([log = log_, remote = remote_](const std::string& reason) {
        log->write(platform::LogLevel::info, "No registration for push notifications: " + reason);
        remote->failed(reason);
    });
}

} // namespace zentavo::desktop
