// Receives the shop's pushes and shows them. The message bus starts this program when one arrives; it knows no toolkit.

#include <memory>

#include <ports/desktop/NotificationService.h>
#include <zentavo/Zentavo.h>

#include "examples/storefront/support/ShopSettings.h"

int main() {
    const auto settings = storefront::ShopSettings::fromEnvironment();
    const auto platform = storefront::makePlatform(settings);
    const auto sdk = storefront::makeSdk(settings, platform);
    return zentavo::desktop::runNotificationService(
        platform, [sdk] { return std::make_shared<zentavo::ZentavoNotificationService>(sdk); });
}
