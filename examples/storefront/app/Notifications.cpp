#include "Notifications.h"

#include <cstdint>
#include <cstdio>
#include <string>

#include <ports/desktop/DesktopAnswers.h>

namespace storefront {

namespace {

void say(const std::string& line) {
    std::printf("      push   | %s\n", line.c_str());
    std::fflush(stdout);
}

std::string text(const zentavo::Map& map, std::string_view key) {
    const zentavo::Value* value = map.find(key);
    return value != nullptr && value->asString() != nullptr ? *value->asString() : "";
}

} // namespace

Notifications::Notifications(const std::shared_ptr<zentavo::Zentavo>& sdk,
                             const std::shared_ptr<zentavo::platform::Platform>& platform)
    : delegate_(std::make_shared<zentavo::ZentavoUNUserNotificationCenter>(sdk)) {
    delegate_->onNotificationPressed(
        [](const zentavo::Map& push) { say("pressed: " + text(push, "title") + " (" + text(push, "clickURL") + ")"); });
    delegate_->setActionForDefault([] { say("opened"); });
    delegate_->setActionForCustomDefault([](const std::string& button) { say("button: " + button); });
    delegate_->setActionForDismiss([] { say("put away"); });
    // A click that started the app is told now.
    platform->userInterface()->userNotifications->setDelegate(delegate_);
    zentavo::desktop::setRemoteNotificationsHandlers(
        {[sdk](const std::string& token) {
             say("pushes are to be sent to " + token.substr(0, token.find('#')));
             sdk->registerForNotification({reinterpret_cast<const std::uint8_t*>(token.data()), token.size()});
         },
         [](const std::string& reason) { say("no pushes: " + reason); }});
    sdk->requestNotificationPermission();
}

} // namespace storefront
