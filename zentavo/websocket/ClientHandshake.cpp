#include "zentavo/websocket/ClientHandshake.h"

#include <algorithm>
#include <array>

#include "zentavo/foundation/Base64.h"
#include "zentavo/websocket/HeaderGrammar.h"

namespace zentavo::websocket {
namespace {

constexpr std::array<std::string_view, 7> ownFields{"Host",
                                                    "Upgrade",
                                                    "Connection",
                                                    "Sec-WebSocket-Key",
                                                    "Sec-WebSocket-Version",
                                                    "Sec-WebSocket-Protocol",
                                                    "Sec-WebSocket-Extensions"};

bool isTarget(std::string_view target) {
    return !target.empty() && target.front() == '/' &&
           std::all_of(target.begin(), target.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

std::optional<std::string> faultOfRequest(const ClientRequest& request) {
    if (request.host.empty() || !grammar::isFieldValue(request.host)) {
        return "the host cannot stand in a request";
    }
    if (!isTarget(request.target)) {
        return "the target cannot stand in a request";
    }
    for (auto it = request.subprotocols.begin(); it != request.subprotocols.end(); ++it) {
        if (!grammar::isToken(*it) || std::find(request.subprotocols.begin(), it, *it) != it) {
            return "subprotocols must be tokens, each named once";
        }
    }
    for (const auto& [name, value] : request.headers) {
        if (!grammar::isToken(name) || !grammar::isFieldValue(value)) {
            return "a header field has characters that it cannot hold";
        }
        if (std::any_of(ownFields.begin(), ownFields.end(),
                        [&name = name](auto own) { return grammar::equalsIgnoringCase(own, name); })) {
            return "the header field " + name + " is the handshake's own";
        }
    }
    return std::nullopt;
}

/// The three digits of "HTTP/1.1 101 …"; 0 when it is no such line.
int statusOf(std::string_view line) {
    const bool shaped = line.size() >= 12 && line.starts_with("HTTP/1.1 ") && (line.size() == 12 || line[12] == ' ') &&
                        std::all_of(line.begin() + 9, line.begin() + 12, [](char c) { return c >= '0' && c <= '9'; });
    return shaped ? (line[9] - '0') * 100 + (line[10] - '0') * 10 + (line[11] - '0') : 0;
}

} // namespace

Result<ClientHandshake> ClientHandshake::make(ClientRequest request, platform::Random& random) {
    if (auto fault = faultOfRequest(request)) {
        return Error{*std::move(fault)};
    }
    if (auto checked = checkDeflate(request.compression); !checked) {
        return checked.error();
    }
    return ClientHandshake(std::move(request), random);
}

ClientHandshake::ClientHandshake(ClientRequest request, platform::Random& random) : asked_(std::move(request)) {
    std::array<std::uint8_t, 16> nonce;
    random.fill(nonce);
    const std::string key = base64::encode(nonce);
    accept_ = acceptFor(key);
    text_ = "GET " + asked_.target + " HTTP/1.1\r\nHost: " + asked_.host +
            "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Key: " + key +
            "\r\nSec-WebSocket-Version: 13\r\n";
    std::string protocols;
    for (const auto& name : asked_.subprotocols) {
        protocols += (protocols.empty() ? "" : ", ") + name;
    }
    if (!protocols.empty()) {
        text_ += "Sec-WebSocket-Protocol: " + protocols + "\r\n";
    }
    if (asked_.compression) {
        text_ += "Sec-WebSocket-Extensions: " + deflateOffer(*asked_.compression) + "\r\n";
    }
    for (const auto& [name, value] : asked_.headers) {
        text_ += name + ": " + value + "\r\n";
    }
    text_ += "\r\n";
}

ClientHandshake::Step ClientHandshake::fail(std::string error) {
    error_ = std::move(error);
    return Step::failed;
}

ClientHandshake::Step ClientHandshake::receive(std::span<char>& input) {
    switch (reader_.take(input)) {
    case HTTPHeadReader::Step::needMore:
        return Step::needMore;
    case HTTPHeadReader::Step::done:
        return check();
    case HTTPHeadReader::Step::tooLarge:
        return fail("the server's answer is too large");
    case HTTPHeadReader::Step::malformed:
        break;
    }
    return fail("the server's answer is malformed");
}

std::optional<std::string> ClientHandshake::faultOf(const HTTPHead& head) const {
    if (!grammar::equalsIgnoringCase(head.list("Upgrade"), "websocket")) {
        return "the server did not upgrade to WebSocket";
    }
    if (!grammar::listHas(head.list("Connection"), "upgrade")) {
        return "the server did not upgrade the connection";
    }
    if (head.list("Sec-WebSocket-Accept") != accept_) {
        return "the server's answer does not match our key";
    }
    const std::string protocol = head.list("Sec-WebSocket-Protocol");
    if (head.count("Sec-WebSocket-Protocol") > 0 &&
        std::find(asked_.subprotocols.begin(), asked_.subprotocols.end(), protocol) == asked_.subprotocols.end()) {
        return "the server chose a subprotocol that was not asked for";
    }
    return std::nullopt;
}

ClientHandshake::Step ClientHandshake::check() {
    const HTTPHead& head = reader_.head();
    const int status = statusOf(head.startLine);
    if (status != 101) {
        status_ = status;
        return fail(status == 0 ? "the server does not speak HTTP/1.1"
                                : "the server answered " + grammar::readable(head.startLine.substr(9)));
    }
    if (auto fault = faultOf(head)) {
        return fail(*std::move(fault));
    }
    auto compression = acceptDeflateAnswer(head.list("Sec-WebSocket-Extensions"), asked_.compression);
    if (!compression) {
        return fail(compression.error().message);
    }
    result_ = {head.list("Sec-WebSocket-Protocol"), *compression, head.fields};
    return Step::done;
}

} // namespace zentavo::websocket
