#include "ports/desktop/PushMessage.h"

#include <optional>
#include <string>
#include <utility>

#include "zentavo/foundation/JSON.h"

namespace zentavo::desktop {

namespace {

constexpr json::Limits limits{PushMessage::maximumBytes, 32, 2'000};

std::optional<std::string> text(const Map& map, std::string_view key) {
    const Value* value = map.find(key);
    const std::string* found = value != nullptr ? value->asString() : nullptr;
    return found != nullptr ? std::optional(*found) : std::nullopt;
}

std::optional<std::int64_t> integer(const Map& map, std::string_view key) {
    const Value* value = map.find(key);
    return value != nullptr ? value->exactInt64() : std::nullopt;
}

void readAlert(const Value& alert, platform::NotificationContent& content) {
    if (const std::string* body = alert.asString()) {
        content.body = *body;
    } else if (const Map* parts = alert.asMap()) {
        content.title = text(*parts, "title").value_or("");
        content.subtitle = text(*parts, "subtitle").value_or("");
        content.body = text(*parts, "body").value_or("");
    }
}

std::optional<std::string> readSound(const Map& aps) {
    const Value* sound = aps.find("sound");
    const Map* details = sound != nullptr ? sound->asMap() : nullptr;
    auto name = details != nullptr ? text(*details, "name") : text(aps, "sound");
    return name && name->empty() ? std::nullopt : std::move(name);
}

} // namespace

Result<PushMessage> PushMessage::read(std::string_view body) {
    auto userInfo = json::readMap(body, limits);
    if (!userInfo) {
        return userInfo.error();
    }
    PushMessage message;
    const Value* found = userInfo->find("aps");
    if (const Map* aps = found != nullptr ? found->asMap() : nullptr) {
        platform::NotificationContent& content = message.content;
        if (const Value* alert = aps->find("alert")) {
            readAlert(*alert, content);
        }
        content.categoryIdentifier = text(*aps, "category").value_or("");
        content.sound = readSound(*aps);
        if (const auto badge = integer(*aps, "badge"); badge && *badge >= 0) {
            content.badge = badge;
        }
        message.alert = !content.title.empty() || !content.subtitle.empty() || !content.body.empty();
        message.mutableContent = integer(*aps, "mutable-content") == 1;
    }
    message.content.userInfo = *std::move(userInfo);
    return message;
}

} // namespace zentavo::desktop
