#include "zentavo/websocket/ServerHandshake.h"

#include <algorithm>

#include "zentavo/foundation/Base64.h"
#include "zentavo/websocket/HeaderGrammar.h"

namespace zentavo::websocket {
namespace {

std::string_view nameOf(int status) {
    switch (status) {
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 426:
        return "Upgrade Required";
    case 429:
        return "Too Many Requests";
    case 431:
        return "Request Header Fields Too Large";
    case 503:
        return "Service Unavailable";
    default:
        return "Refused";
    }
}

std::string fieldText(const HeaderFields& fields) {
    std::string text;
    for (const auto& [name, value] : fields) {
        if (grammar::isToken(name) && grammar::isFieldValue(value)) {
            text += name + ": " + value + "\r\n";
        }
    }
    return text;
}

bool isKey(const std::string& key) {
    const auto nonce = base64::decode(key);
    return nonce && nonce->size() == 16;
}

/// The target of a GET request of HTTP/1.1; none when the line is another.
std::optional<std::string_view> targetOf(std::string_view line) {
    constexpr std::string_view method = "GET ";
    constexpr std::string_view version = " HTTP/1.1";
    if (line.size() <= method.size() + version.size() || !line.starts_with(method) || !line.ends_with(version)) {
        return std::nullopt;
    }
    const auto target = line.substr(method.size(), line.size() - method.size() - version.size());
    return target.find(' ') == std::string_view::npos ? std::optional(target) : std::nullopt;
}

} // namespace

ServerHandshake::Step ServerHandshake::receive(std::span<char>& input) {
    switch (reader_.take(input)) {
    case HTTPHeadReader::Step::needMore:
        return Step::needMore;
    case HTTPHeadReader::Step::done:
        return check(reader_.head());
    case HTTPHeadReader::Step::tooLarge:
        return reject(431, "the request is too large");
    case HTTPHeadReader::Step::malformed:
        break;
    }
    return reject(400, "the request is malformed");
}

ServerHandshake::Step ServerHandshake::reject(int status, std::string_view why, const HeaderFields& headers) {
    answer_ = refuse(status, headers, why);
    return Step::refused;
}

ServerHandshake::Step ServerHandshake::check(const HTTPHead& head) {
    const auto target = targetOf(head.startLine);
    if (!target) {
        return head.startLine.starts_with("GET ") ? reject(400, "this is no HTTP/1.1 request")
                                                  : reject(405, "WebSocket begins with GET", {{"Allow", "GET"}});
    }
    if (head.count("Host") != 1 || head.list("Host").empty()) {
        return reject(400, "the request names no host");
    }
    if (!grammar::listHas(head.list("Upgrade"), "websocket") || !grammar::listHas(head.list("Connection"), "upgrade")) {
        return reject(426, "this server speaks WebSocket only", {{"Upgrade", "websocket"}});
    }
    if (head.list("Sec-WebSocket-Version") != "13") {
        return reject(426, "this server speaks version 13", {{"Sec-WebSocket-Version", "13"}});
    }
    key_ = head.list("Sec-WebSocket-Key");
    if (!isKey(key_)) {
        return reject(400, "the key is not 16 bytes in base64");
    }
    const std::string protocols = head.list("Sec-WebSocket-Protocol");
    for (const std::string_view name : grammar::splitList(protocols)) {
        if (!grammar::isToken(name)) {
            return reject(400, "a subprotocol is no token");
        }
        request_.subprotocols.emplace_back(name);
    }
    if (compression_) {
        auto answer = answerDeflateOffer(head.list("Sec-WebSocket-Extensions"), *compression_);
        if (!answer) {
            return reject(400, answer.error().message);
        }
        agreed_ = *std::move(answer);
    }
    request_.target = *target;
    request_.origin = head.list("Origin");
    request_.headers = head.fields;
    return Step::request;
}

std::string ServerHandshake::accept(const std::string& subprotocol, const HeaderFields& headers) {
    const auto& asked = request_.subprotocols;
    const bool chosen = std::find(asked.begin(), asked.end(), subprotocol) != asked.end();
    result_.subprotocol = chosen ? subprotocol : std::string();
    result_.headers = request_.headers;
    if (agreed_) {
        result_.compression = agreed_->agreement;
    }
    return "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Accept: " +
           acceptFor(key_) + "\r\n" + (chosen ? "Sec-WebSocket-Protocol: " + subprotocol + "\r\n" : "") +
           (agreed_ ? "Sec-WebSocket-Extensions: " + agreed_->header + "\r\n" : "") + fieldText(headers) + "\r\n";
}

std::string ServerHandshake::refuse(int status, const HeaderFields& headers, std::string_view body) {
    const int number = status >= 300 && status <= 599 ? status : 403;
    return "HTTP/1.1 " + std::to_string(number) + " " + std::string(nameOf(number)) + "\r\n" + fieldText(headers) +
           "Connection: close\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

} // namespace zentavo::websocket
