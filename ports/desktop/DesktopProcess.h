#pragma once

#include <memory>
#include <optional>

#include "ports/desktop/AppWindows.h"
#include "ports/desktop/BusNames.h"
#include "ports/desktop/FreedesktopUserNotifications.h"
#include "ports/desktop/RemoteNotifications.h"
#include "ports/desktop/SessionBus.h"
#include "zentavo/platform/Platform.h"

namespace zentavo::desktop {

/// What a process has on the desktop, once: its connection to the bus, its notification centre and, where it is an app, the
/// place where its extensions find it. Main thread, but for what says otherwise.
class ZENTAVO_EXPORT DesktopProcess {
public:
    /// This process's, made for the first platform that comes and kept for ever; a later one brings its main queue and its
    /// windows.
    static DesktopProcess& of(const platform::Platform& system, std::shared_ptr<platform::MainQueue> mainQueue,
                              AppWindows windows);

    DesktopProcess(std::shared_ptr<SessionBus> bus, std::shared_ptr<RemoteNotifications> remote,
                   const platform::Platform& system, std::shared_ptr<platform::MainQueue> mainQueue,
                   AppWindows windows);

    const std::shared_ptr<FreedesktopUserNotifications>& userNotifications() const { return notifications_; }
    /// What comes of it is told to the host's handlers. Any thread.
    void registerForRemoteNotifications() const;

private:
    class Windows;

    const std::shared_ptr<platform::SystemLog> log_;
    const std::shared_ptr<RemoteNotifications> remote_;
    const std::shared_ptr<Windows> windows_;
    /// Of the app that this process is; none for one of its extensions, and for a program that the bus cannot name.
    const std::optional<BusNames> names_;
    const std::shared_ptr<FreedesktopUserNotifications> notifications_;
    const NotificationServiceClient service_;
};

} // namespace zentavo::desktop
