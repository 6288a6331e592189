#include "zentavo/socketio/EngineHandshake.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "zentavo/foundation/JSON.h"

namespace zentavo::socketio {

namespace {

constexpr json::Limits limits{64U << 10U, 8, 1000};
constexpr std::size_t longestSid = 512;

/// A number above 0 under `name`; `otherwise` when there is none.
Result<std::int64_t> positive(const Map& map, std::string_view name, std::int64_t otherwise) {
    const auto* value = map.find(name);
    if (value == nullptr) {
        return otherwise;
    }
    const auto number = value->exactInt64();
    if (!number || *number <= 0) {
        return Error{std::string(name) + " in the handshake is no number above 0"};
    }
    return *number;
}

std::chrono::milliseconds atMostADay(std::int64_t milliseconds) {
    return std::min(std::chrono::milliseconds(milliseconds), std::chrono::milliseconds(std::chrono::hours(24)));
}

} // namespace

Result<EngineHandshake> readEngineHandshake(std::string_view data) {
    const auto map = json::readMap(data, limits);
    if (!map) {
        return Error{"the handshake is no JSON object: " + map.error().message};
    }
    EngineHandshake handshake;
    const auto* sid = map->find("sid");
    if (sid == nullptr || sid->asString() == nullptr || sid->asString()->empty() ||
        sid->asString()->size() > longestSid) {
        return Error{"the handshake has no session id"};
    }
    handshake.sid = *sid->asString();
    if (const auto* upgrades = map->find("upgrades"); upgrades != nullptr && upgrades->asList() != nullptr) {
        handshake.offersWebSocket = std::any_of(upgrades->asList()->begin(), upgrades->asList()->end(),
                                                [](const Value& name) { return name == Value("websocket"); });
    }
    const auto interval = positive(*map, "pingInterval", handshake.pingInterval.count());
    const auto timeout = positive(*map, "pingTimeout", handshake.pingTimeout.count());
    if (!interval || !timeout) {
        return interval ? timeout.error() : interval.error();
    }
    handshake.pingInterval = atMostADay(*interval);
    handshake.pingTimeout = atMostADay(*timeout);
    if (map->contains("maxPayload")) {
        const auto maximum = positive(*map, "maxPayload", 0);
        if (!maximum) {
            return maximum.error();
        }
        handshake.maxPayload = static_cast<std::size_t>(*maximum);
    }
    return handshake;
}

} // namespace zentavo::socketio
