// Each input is read as what an app's programs tell each other over the bus. What can be read is written again and reads
// back as the same; and whatever came with it becomes a message that the notification service can be given.

#include "fuzz/Check.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/NotificationMessage.h"

namespace {

using namespace zentavo;

void checkShown(const platform::NotificationContent& content) {
    const auto actions = desktop::actionsOf(content, {{content.categoryIdentifier, {{"a", "A"}}}}, true);
    check(!actions.empty() && actions.front().identifier == platform::defaultActionIdentifier, "a click is a click");
    for (std::size_t i = 0; i < actions.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            check(actions[i].key != actions[j].key, "keys are told apart");
        }
    }
    const auto arguments = desktop::notifyArguments({"App", "app"}, content, actions, {true, true}, 7, 0);
    check(g_variant_is_of_type(arguments.get(), G_VARIANT_TYPE("(susssasa{sv}i)")) != FALSE, "as the bus wants it");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = textOf(data, size);
    if (const auto sent = desktop::codec::readResponse(text)) {
        const auto written = desktop::codec::write(sent->response, sent->id);
        // Escaped text is longer than what was read, so the bound may be met on the way back.
        check(written.ok() || size > desktop::codec::maximumBytes / 8, "a response that was read can be written");
        check(!written || desktop::codec::readResponse(*written).value() == *sent, "and reads back as the same");
        checkShown(sent->response.notification.request.content);
    }
    if (const auto notification = desktop::codec::readNotification(text)) {
        check(!notification->request.identifier.empty(), "a notification has an identifier");
        const auto written = desktop::codec::write(*notification);
        check(written.ok() || size > desktop::codec::maximumBytes / 8, "a notification that was read can be written");
        check(!written || desktop::codec::readNotification(*written).value() == *notification,
              "and reads back as the same");
        checkShown(notification->request.content);
    }
    return 0;
}
