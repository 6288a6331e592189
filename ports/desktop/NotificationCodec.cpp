#include "ports/desktop/NotificationCodec.h"

#include <utility>

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo::desktop::codec {

namespace {

// A push nests as deep as its sender likes; the bus carries it for nobody but us.
constexpr json::Limits limits{maximumBytes, 64, 20'000};

template <class T>
Value orNull(const std::optional<T>& value) {
    return value ? Value(*value) : Value();
}

Map map(const platform::Notification& notification) {
    const platform::NotificationContent& content = notification.request.content;
    List attachments;
    for (const auto& attachment : content.attachments) {
        attachments.push_back(Map{{"identifier", attachment.identifier}, {"path", attachment.path}});
    }
    return {{"identifier", notification.request.identifier},
            {"title", content.title},
            {"subtitle", content.subtitle},
            {"body", content.body},
            {"badge", orNull(content.badge)},
            {"sound", orNull(content.sound)},
            {"category", content.categoryIdentifier},
            {"userInfo", content.userInfo},
            {"attachments", std::move(attachments)}};
}

platform::Notification notification(KeyedDecoder& decoder) {
    platform::Notification read;
    platform::NotificationContent& content = read.request.content;
    read.request.identifier = decoder.string("identifier");
    content.title = decoder.string("title");
    content.subtitle = decoder.string("subtitle");
    content.body = decoder.string("body");
    content.badge = decoder.optionalInteger("badge");
    content.sound = decoder.optionalString("sound");
    content.categoryIdentifier = decoder.string("category");
    content.userInfo = decoder.map("userInfo");
    content.attachments = decoder.nestedList("attachments", [](KeyedDecoder& each) {
        platform::NotificationAttachment attachment;
        attachment.identifier = each.string("identifier");
        attachment.path = each.string("path");
        return attachment;
    });
    if (read.request.identifier.empty()) {
        decoder.fail("identifier", "is empty");
    }
    return read;
}

Result<std::string> bounded(Result<std::string> text) {
    if (text && text->size() > maximumBytes) {
        return Error{"a notification of " + std::to_string(text->size()) + " bytes is too large for the bus"};
    }
    return text;
}

template <class Record>
Result<Record> read(std::string_view text, Record (*decode)(KeyedDecoder&)) {
    const Result<Map> map = json::readMap(text, limits);
    if (!map) {
        return map.error();
    }
    KeyedDecoder decoder(*map);
    Record record = decode(decoder);
    if (const auto& failure = decoder.failure()) {
        return Error{failure->message};
    }
    return record;
}

} // namespace

Result<std::string> write(const platform::Notification& notification) {
    return bounded(json::write(map(notification)));
}

Result<platform::Notification> readNotification(std::string_view text) {
    return read<platform::Notification>(text, notification);
}

Result<std::string> write(const platform::NotificationResponse& response, const std::string& id) {
    Map sent{{"actionIdentifier", response.actionIdentifier}, {"notification", map(response.notification)}};
    if (!response.activationToken.empty()) {
        sent.set("activationToken", response.activationToken);
    }
    if (!id.empty()) {
        sent.set("id", id);
    }
    return bounded(json::write(sent));
}

Result<SentResponse> readResponse(std::string_view text) {
    return read<SentResponse>(text, [](KeyedDecoder& decoder) {
        SentResponse sent;
        sent.response.actionIdentifier = decoder.string("actionIdentifier");
        sent.response.notification = decoder.nested("notification", notification);
        sent.response.activationToken = decoder.optionalString("activationToken").value_or("");
        sent.id = decoder.optionalString("id").value_or("");
        if (sent.id.size() > maximumIdBytes) {
            decoder.fail("id", "is too long");
        }
        return sent;
    });
}

} // namespace zentavo::desktop::codec
