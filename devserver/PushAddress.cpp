#include "devserver/PushAddress.h"

#include <algorithm>
#include <utility>

#include "devserver/Text.h"
#include "zentavo/foundation/Base64.h"
#include "zentavo/foundation/Hex.h"
#include "zentavo/foundation/URL.h"

namespace zentavo::devserver {

namespace {

/// Takes "name=…" off `fragment`'s items into `bytes`; says what is wrong, or nothing.
std::string readKey(std::string_view fragment, std::string_view name, std::size_t size, webpush::Bytes& bytes) {
    const std::string start = std::string(name) + "=";
    std::string_view found;
    for (std::string_view rest = fragment; !rest.empty();) {
        const std::string_view item = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(rest.size(), item.size() + 1));
        if (item.starts_with(start)) {
            found = item.substr(start.size());
        }
    }
    if (found.empty()) {
        return "the token's fragment has no " + std::string(name);
    }
    const auto decoded = base64::decodeURL(found);
    if (!decoded || decoded->size() != size) {
        return std::string(name) + " in the token's fragment is " +
               (decoded ? std::to_string(decoded->size()) + " bytes; expected " + std::to_string(size)
                        : std::string("no base64url"));
    }
    bytes = *decoded;
    return {};
}

} // namespace

Result<PushAddress> PushAddress::ofToken(std::string_view token) {
    const auto bytes = hex::decode(token);
    const std::string text = bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    const auto url = isUTF8(text) ? URL::parse(text) : std::nullopt;
    if (!url || !url->isHTTP()) {
        return Error{"its token is no URL of an endpoint"};
    }
    PushAddress address;
    address.endpoint = url->text().substr(0, url->text().find('#'));
    if (const auto fragment = url->fragment()) {
        webpush::Receiver receiver;
        std::string problem = readKey(*fragment, "p256dh", webpush::publicKeyBytes, receiver.publicKey);
        if (problem.empty()) {
            problem = readKey(*fragment, "auth", webpush::authBytes, receiver.auth);
        }
        if (!problem.empty()) {
            return Error{problem};
        }
        address.receiver = std::move(receiver);
    }
    return address;
}

} // namespace zentavo::devserver
