#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ports/desktop/SessionBus.h"
#include "zentavo/platform/Notification.h"

namespace zentavo::desktop {

/// The app's own notification-service extension, from the app's side. Any thread; answers come on the bus's.
class NotificationServiceClient {
public:
    /// `name` is the extension's on the bus; with none there is no extension.
    NotificationServiceClient(std::shared_ptr<SessionBus> bus, std::string name);

    /// Asks for pushes. The extension is started for it. `failed` is called where it cannot even be asked.
    void registerForPushes(std::function<void(std::string reason)> failed) const;
    /// What it shows; nothing where it does not run.
    void delivered(std::function<void(std::vector<platform::Notification>)> answer) const;
    void removeDelivered(const std::vector<std::string>& identifiers) const;

private:
    SessionBus::Call call(const char* method) const;

    const std::shared_ptr<SessionBus> bus_;
    const std::string name_;
};

} // namespace zentavo::desktop
