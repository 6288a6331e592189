#pragma once

#include <memory>

#include "ports/desktop/BusNames.h"
#include "ports/desktop/FreedesktopUserNotifications.h"
#include "ports/desktop/RemoteNotifications.h"
#include "ports/desktop/SessionBus.h"

namespace zentavo::desktop {

/// The app as its extensions find it on the bus.
class AppEndpoint {
public:
    /// From now on `bus` answers the app's extensions under its name. Main thread: a host whose own application object has that name already, on
    /// a connection of its own, is found there as well.
    static void open(SessionBus& bus, const BusNames& names,
                     const std::shared_ptr<FreedesktopUserNotifications>& notifications,
                     const std::shared_ptr<RemoteNotifications>& remote,
                     const std::shared_ptr<platform::SystemLog>& log);
};

} // namespace zentavo::desktop
