#include "zentavo/socketio/Packet.h"

#include <algorithm>
#include <array>
#include <utility>

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/UTF8.h"

namespace zentavo::socketio {

namespace {
constexpr std::size_t longestNamespace = 1024;
/// Deeper than `json::write` writes: what lies below is refused there.
constexpr int deepest = 300;

bool fits(const Value& value, std::size_t count, int depth) noexcept {
    if (depth > deepest) {
        return false;
    }
    if (const auto* list = value.asList()) {
        return std::all_of(list->begin(), list->end(),
                           [&](const Value& inner) { return fits(inner, count, depth + 1); });
    }
    const auto* map = value.asMap();
    if (map == nullptr) {
        return true;
    }
    if (const auto* mark = map->find("_placeholder"); mark != nullptr && *mark == Value(true)) {
        const auto number = placeholderNumber(value);
        return number && *number >= 0 && static_cast<std::uint64_t>(*number) < count;
    }
    return std::all_of(map->begin(), map->end(),
                       [&](const Map::Entry& entry) { return fits(entry.value, count, depth + 1); });
}
} // namespace

std::optional<std::int64_t> placeholderNumber(const Value& value) noexcept {
    const auto* map = value.asMap();
    if (map == nullptr || map->size() > 2) {
        return std::nullopt;
    }
    const auto* mark = map->find("_placeholder");
    const auto* number = map->find("num");
    return mark != nullptr && *mark == Value(true) && number != nullptr ? number->exactInt64() : std::nullopt;
}

bool placeholdersFit(const Value& value, std::size_t count) noexcept { return fits(value, count, 0); }

bool isReserved(std::string_view event) noexcept {
    constexpr std::array<std::string_view, 6> names{"connect",       "connect_error", "disconnect",
                                                    "disconnecting", "newListener",   "removeListener"};
    return std::find(names.begin(), names.end(), event) != names.end();
}

std::optional<std::string> namespaceName(std::string_view text) {
    // A control character could part a polling body where nobody meant it.
    const bool strange = std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == ','; });
    if (text.size() > longestNamespace || strange || !utf8::isValid(text)) {
        return std::nullopt;
    }
    return text.starts_with('/') ? std::string(text) : "/" + std::string(text);
}

Result<std::vector<EngineFrame>> writePacket(Packet packet, const Limits& limits) {
    const auto count = packet.attachments.size();
    if (count > limits.maximumAttachments) {
        return Error{std::to_string(count) + " attachments are more than a packet may have, which is " +
                     std::to_string(limits.maximumAttachments)};
    }
    const bool binary = count > 0;
    if (binary && !placeholdersFit(packet.data, count)) {
        return Error{"a placeholder stands for an attachment that is not there"};
    }
    // Behind the digit of the message: type, attachments, namespace, id, data.
    std::string text = "4";
    text.push_back(static_cast<char>('0' + static_cast<int>(packet.type) + (binary ? 3 : 0)));
    if (binary) {
        text += std::to_string(count) + "-";
    }
    if (packet.space != "/") {
        text += packet.space + ",";
    }
    if (packet.id) {
        text += std::to_string(*packet.id);
    }
    if (!packet.data.isNull()) {
        const auto json = json::write(packet.data);
        if (!json) {
            return json.error();
        }
        text += *json;
    }
    std::vector<EngineFrame> frames;
    frames.reserve(1 + count);
    frames.push_back({std::move(text), false});
    for (auto& attachment : packet.attachments) {
        frames.push_back({std::move(attachment), true});
    }
    return frames;
}

} // namespace zentavo::socketio
