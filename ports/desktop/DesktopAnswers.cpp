#include "ports/desktop/DesktopAnswers.h"

#include <memory>
#include <utility>

#include "ports/desktop/DesktopProcess.h"
#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::desktop {

namespace {

/// What the process can do besides what it could before.
class DesktopApplication final : public platform::Application {
public:
    DesktopApplication(const DesktopProcess& process, std::shared_ptr<platform::Application> before)
        : process_(process), before_(std::move(before)) {}

    void registerForRemoteNotifications() override { process_.registerForRemoteNotifications(); }
    void open(const URL& url) override { before_->open(url); }

private:
    const DesktopProcess& process_;
    const std::shared_ptr<platform::Application> before_;
};

} // namespace

void setRemoteNotificationsHandlers(RemoteNotificationsHandlers handlers) {
    RemoteNotifications::shared()->setHandlers(std::move(handlers));
}

bool attach(Zentavo& sdk, AppWindows windows) {
    return entryPoint(
        "attach",
        [&] {
            platform::Platform& system = *sdk.state()->platform;
            platform::UserInterface interface = *system.userInterface();
            const DesktopProcess& process = DesktopProcess::of(system, interface.mainQueue, std::move(windows));
            interface.userNotifications = process.userNotifications();
            if (!std::dynamic_pointer_cast<DesktopApplication>(interface.application)) {
                interface.application = std::make_shared<DesktopApplication>(process, interface.application);
            }
            system.attach(std::move(interface));
            return true;
        },
        false);
}

bool attach(AppWindows windows) {
    const auto sdk = Zentavo::shared();
    return attach(*sdk, std::move(windows));
}

void setBadgeCount(Zentavo& sdk, std::int64_t count) {
    entryPoint("setBadgeCount",
               [&] { sdk.state()->platform->userInterface()->userNotifications->setBadgeCount(count); });
}

void setBadgeCount(std::int64_t count) {
    const auto sdk = Zentavo::shared();
    setBadgeCount(*sdk, count);
}

} // namespace zentavo::desktop
