#pragma once

#include <memory>

#include <zentavo/Zentavo.h>

namespace storefront {

/// The shop's side of push notifications: asks to be allowed to show them, tells the SDK where they are to be sent, and
/// hears what the user does with them. To be made after the activation.
class Notifications {
public:
    Notifications(const std::shared_ptr<zentavo::Zentavo>& sdk,
                  const std::shared_ptr<zentavo::platform::Platform>& platform);

private:
    const std::shared_ptr<zentavo::ZentavoUNUserNotificationCenter> delegate_;
};

} // namespace storefront
