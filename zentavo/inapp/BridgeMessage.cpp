#include "zentavo/inapp/BridgeMessage.h"

#include <string_view>

#include "zentavo/foundation/JSON.h"

namespace zentavo {

namespace {

const std::string* text(const Map& map, std::string_view key) {
    const Value* member = map.find(key);
    return member != nullptr ? member->asString() : nullptr;
}

const Map* object(const Map& map, std::string_view key) {
    const Value* member = map.find(key);
    return member != nullptr ? member->asMap() : nullptr;
}

std::optional<std::int64_t> integer(const Map& map, std::string_view key) {
    const Value* member = map.find(key);
    return member != nullptr ? member->exactInt64() : std::nullopt;
}

Map copied(const Map* map) { return map != nullptr ? *map : Map(); }

std::optional<URL> trackingURL(const std::string* link) {
    if (link == nullptr) {
        return std::nullopt;
    }
    constexpr std::string_view pixel = "resp_type=pixel";
    constexpr std::string_view json = "resp_type=json";
    std::string asking = *link;
    for (std::size_t at = asking.find(pixel); at != std::string::npos; at = asking.find(pixel, at + json.size())) {
        asking.replace(at, pixel.size(), json);
    }
    return URL::parse(asking);
}

ClickMessage readClick(const Map& data, std::string_view routeKey) {
    ClickMessage click{trackingURL(text(data, "trackingUrl")), std::nullopt};
    if (const std::string* route = text(data, routeKey)) {
        click.route = *route;
    }
    return click;
}

std::optional<BridgeMessage> readSize(const Map& data) {
    const auto width = integer(data, "width");
    const auto height = integer(data, "height");
    if (!width || !height) {
        return std::nullopt;
    }
    SizeMessage message;
    message.width = *width;
    message.height = *height;
    if (const Map* position = object(data, "positionSettings")) {
        message.top = integer(*position, "top").value_or(0);
        message.bottom = integer(*position, "bottom").value_or(0);
        if (const std::string* suffix = text(*position, "positionSuffix")) {
            message.positionSuffix = *suffix;
        }
    }
    if (const std::string* edge = text(data, "floatingBarPosition")) {
        message.floatingBarPosition = *edge;
    }
    return message;
}

std::optional<BridgeMessage> readTrack(const Map& body) {
    const Map* data = object(body, "data");
    const Map* event = data != nullptr ? object(*data, "eventData") : nullptr;
    if (event == nullptr) {
        return std::nullopt;
    }
    TrackMessage message;
    if (const std::string* name = text(*event, "en")) {
        message.name = *name;
    } else if (const std::string* outer = text(*data, "en")) {
        message.name = *outer;
    }
    if (const Map* dims = object(*event, "dims")) {
        message.userProps = copied(object(*dims, "users"));
        message.customerProps = copied(object(*dims, "customers"));
    }
    message.eventProps = copied(object(*event, "extra"));
    const Value* items = event->find("items");
    if (const List* list = items != nullptr ? items->asList() : nullptr) {
        for (const Value& item : *list) {
            if (const Map* map = item.asMap()) {
                message.items.push_back(*map);
            }
        }
    }
    return message;
}

/// What stands on the element that was clicked: an object, or its JSON text, as an HTML attribute holds it.
std::optional<BridgeMessage> readRedirect(const Map& body) {
    constexpr std::string_view key = "vtx902-click-data";
    const Value* member = body.find(key);
    if (const Map* data = object(body, "data"); member == nullptr && data != nullptr) {
        member = data->find(key);
    }
    if (member == nullptr) {
        return std::nullopt;
    }
    if (const std::string* attribute = member->asString()) {
        const auto click = json::readMap(*attribute);
        return click ? std::optional<BridgeMessage>(readClick(*click, "href")) : std::nullopt;
    }
    return member->asMap() != nullptr ? std::optional<BridgeMessage>(readClick(*member->asMap(), "href"))
                                      : std::nullopt;
}

} // namespace

std::optional<BridgeMessage> readTemplateMessage(const Map& body) {
    const std::string* type = text(body, "type");
    if (type == nullptr) {
        return std::nullopt;
    }
    if (*type == "zentavo-cdp-webview-closed") {
        return CloseMessage{};
    }
    const Map* data = object(body, "data");
    if (*type == "zentavo-cdp-campaign-change-border-radius") {
        const auto radius = data != nullptr ? integer(*data, "radius") : std::nullopt;
        return CornerMessage{radius.value_or(CornerMessage::usualRadius)};
    }
    if (data == nullptr) {
        return std::nullopt;
    }
    if (*type == "zentavo-cdp-campaign-size") {
        return readSize(*data);
    }
    if (*type == "zentavo-cdp-campaign-change-route") {
        return readClick(*data, "route");
    }
    return std::nullopt;
}

std::optional<BridgeMessage> readCodeModeMessage(const Map& body) {
    const std::string* type = text(body, "type");
    if (type == nullptr) {
        return std::nullopt;
    }
    if (*type == "mt.Action.track") {
        return readTrack(body);
    }
    if (*type == "mt.Action.close") {
        return CloseMessage{};
    }
    if (*type == "mt.Action.redirect") {
        return readRedirect(body);
    }
    return std::nullopt;
}

} // namespace zentavo
