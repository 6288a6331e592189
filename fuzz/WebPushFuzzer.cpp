// Each input is read as an encrypted push, as the inside of one, as a change of a good one, and as what a push says.
// Nothing but what was encrypted is ever read, and what can be read can be handed on.

#include <string>

#include "fuzz/Check.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/PushMessage.h"
#include "ports/desktop/WebPushDecryption.h"
#include "tests/desktop/WebPushSender.h"

namespace {

using namespace zentavo;
using desktop::WebPushKeys;
using desktop::web_push::decrypt;

const WebPushKeys& keys() {
    static const WebPushKeys made =
        WebPushKeys::read("q1dXpw3UpT5VOmu_cf_v6ih07Aems3njxI-JWgLcM94.BTBZMqHH6r4Tts7J_aSIgg").value();
    return made;
}

void readPush(std::string_view body) {
    const auto message = desktop::PushMessage::read(body);
    if (!message) {
        check(!message.error().message.empty(), "a refusal says why");
        return;
    }
    const platform::NotificationContent& content = message->content;
    check(message->alert == !(content.title + content.subtitle + content.body).empty(), "an alert has a text");
    check(content.badge.value_or(0) >= 0, "no icon counts below zero");
    const platform::Notification notification{{"id", content}};
    const auto text = desktop::codec::write(notification);
    check(text.ok(), "a push that was read can be sent between programs");
    const auto back = desktop::codec::readNotification(*text);
    check(back.ok() && *back == notification, "and is the same there");
}

/// `inside` is what is encrypted: a text, the byte that ends it, and padding.
void openInside(std::string_view inside) {
    tests::WebPushSender sender;
    sender.recordSize = 1U << 16U;
    sender.ending = "";
    const auto text = decrypt(keys(), sender.encrypt(keys(), inside));
    const std::size_t end = inside.find_last_not_of('\0');
    const bool good = end != std::string_view::npos && inside[end] == 2;
    check(text.ok() == good, "a text ends with its byte");
    check(!text || *text == inside.substr(0, end), "what was encrypted comes out");
}

void change(std::string_view changes) {
    static const std::string good = tests::WebPushSender().encrypt(keys(), "a text");
    constexpr std::size_t recordSize = 16;
    std::string message = good;
    for (std::size_t i = 0; i + 1 < changes.size(); i += 2) {
        const std::size_t at = static_cast<unsigned char>(changes[i]) % message.size();
        if (at < recordSize || at >= recordSize + 4) { // a larger size is as good
            message[at] = static_cast<char>(message[at] ^ changes[i + 1]);
        }
    }
    check(decrypt(keys(), message).ok() == (message == good), "no change goes unnoticed");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = textOf(data, size);
    if (const auto text = decrypt(keys(), input)) {
        readPush(*text);
    }
    readPush(input);
    if (!input.empty() && input.size() < 4'000) {
        openInside(input);
        change(input);
    }
    return 0;
}
