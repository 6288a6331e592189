// Draws the shop's rich notifications. The message bus starts this program when the user wants to see all of one.

#include <memory>
#include <utility>

#include <ports/gtk/NotificationContentHost.h>
#include <zentavo/push/templates/PushTemplateBaseController.h>

#include "examples/storefront/support/ShopSettings.h"

int main() {
    const auto settings = storefront::ShopSettings::fromEnvironment();
    const auto sdk = storefront::makeSdk(settings, storefront::makePlatform(settings));
    zentavo::gtk::NotificationContentHost host(sdk,
                                               [](auto context, const auto& notification) {
                                                   return zentavo::PushTemplateBaseController::handleNotification(
                                                              std::move(context), notification) != nullptr;
                                               },
                                               {.title = "News from Nordlys"});
    return host.run();
}
