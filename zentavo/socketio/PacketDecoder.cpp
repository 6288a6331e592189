#include "zentavo/socketio/PacketDecoder.h"

#include <utility>

#include "zentavo/foundation/JSON.h"

namespace zentavo::socketio {

namespace {

/// More digits than any counter of ours reaches, and few enough for 64 bits.
constexpr std::size_t longestNumber = 15;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Takes the digits in front of `text`; none when there are none or too many.
std::optional<std::uint64_t> takeNumber(std::string_view& text) {
    std::uint64_t number = 0;
    std::size_t length = 0;
    for (; length < text.size() && isDigit(text[length]); ++length) {
        if (length == longestNumber) {
            return std::nullopt;
        }
        number = number * 10 + static_cast<std::uint64_t>(text[length] - '0');
    }
    text.remove_prefix(length);
    return length > 0 ? std::optional(number) : std::nullopt;
}

/// What a packet of this type carries; empty when it is right.
const char* faultOf(Packet& packet) {
    switch (packet.type) {
    case PacketType::connect:
        return packet.data.isNull() || packet.data.asMap() != nullptr ? "" : "the data of a connect packet are no map";
    case PacketType::disconnect:
        return packet.data.isNull() ? "" : "a disconnect packet has data";
    case PacketType::connectError:
        return packet.data.asMap() != nullptr || packet.data.asString() != nullptr
                   ? ""
                   : "the data of a connect error are neither map nor text";
    case PacketType::acknowledgement:
        return packet.data.asList() != nullptr && packet.id ? "" : "an acknowledgement without list or id";
    case PacketType::event:
        break;
    }
    auto* list = packet.data.asList();
    if (list == nullptr || list->empty()) {
        return "an event is no list that begins with a name";
    }
    if (const auto number = list->front().exactInt64()) {
        list->front() = std::to_string(*number); // names may be numbers
    }
    const auto* name = list->front().asString();
    return name != nullptr && !isReserved(*name) ? "" : "an event has no name, or one that is reserved";
}

} // namespace

Result<std::optional<Packet>> PacketDecoder::takeText(std::string_view text) {
    if (waiting_) {
        return Error{"a packet came where an attachment was due"};
    }
    if (text.empty() || text.front() < '0' || text.front() > '6') {
        return Error{"no Socket.IO packet begins like that"};
    }
    if (text.size() > limits_.maximumPacket) {
        return Error{"a packet is larger than " + std::to_string(limits_.maximumPacket) + " bytes"};
    }
    const std::size_t whole = text.size();
    const int type = text.front() - '0';
    const bool binary = type > 4;
    text.remove_prefix(1);
    Packet packet;
    packet.bytes = whole;
    packet.type = static_cast<PacketType>(binary ? type - 3 : type);
    std::size_t attachments = 0;
    if (binary) {
        const auto count = takeNumber(text);
        if (!count || text.empty() || text.front() != '-') {
            return Error{"a binary packet does not tell the number of its attachments"};
        }
        if (*count > limits_.maximumAttachments) {
            return Error{std::to_string(*count) + " attachments are more than " +
                         std::to_string(limits_.maximumAttachments)};
        }
        attachments = static_cast<std::size_t>(*count);
        text.remove_prefix(1);
    }
    if (text.starts_with('/')) {
        const auto comma = text.find(',');
        packet.space = text.substr(0, comma);
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
        if (!namespaceName(packet.space)) {
            return Error{"a namespace is too long or not what one can be called"};
        }
    }
    if (!text.empty() && isDigit(text.front())) {
        packet.id = takeNumber(text);
        if (!packet.id) {
            return Error{"an id has too many digits"};
        }
    }
    if (!text.empty()) {
        auto data = json::read(text, {limits_.maximumPacket, limits_.maximumDepth, limits_.maximumValues});
        if (!data) {
            return Error{"the data of a packet: " + data.error().message};
        }
        packet.data = *std::move(data);
    }
    if (const char* fault = faultOf(packet); *fault != '\0') {
        return Error{fault};
    }
    if (binary && !placeholdersFit(packet.data, attachments)) {
        return Error{"a placeholder stands for an attachment that is not announced"};
    }
    if (attachments == 0) {
        return std::optional(std::move(packet));
    }
    waiting_ = std::move(packet);
    missing_ = attachments;
    return std::optional<Packet>();
}

Result<std::optional<Packet>> PacketDecoder::takeBinary(std::string_view bytes) {
    if (!waiting_) {
        return Error{"an attachment came that nobody announced"};
    }
    waiting_->bytes += bytes.size();
    if (waiting_->bytes > limits_.maximumPacket) {
        return Error{"a packet and its attachments are larger than " + std::to_string(limits_.maximumPacket) +
                     " bytes"};
    }
    waiting_->attachments.emplace_back(bytes);
    if (--missing_ > 0) {
        return std::optional<Packet>();
    }
    return std::exchange(waiting_, std::nullopt);
}

} // namespace zentavo::socketio
