#include "zentavo/rsa/PEM.h"

#include <optional>
#include <string>

#include "zentavo/foundation/Base64.h"

namespace zentavo::rsa {
namespace {

constexpr std::string_view begin = "-----BEGIN ";
constexpr std::string_view dashes = "-----";

std::optional<PEM::Kind> kindOf(std::string_view label) {
    if (label == "PRIVATE KEY" || label == "RSA PRIVATE KEY") {
        return PEM::Kind::privateKey;
    }
    if (label == "PUBLIC KEY" || label == "RSA PUBLIC KEY") {
        return PEM::Kind::publicKey;
    }
    return std::nullopt;
}

} // namespace

Result<PEM> PEM::read(std::string_view text) {
    constexpr auto npos = std::string_view::npos;
    if (text.size() > longest) {
        return Error{"the PEM text is longer than 64 KiB, which no RSA key is"};
    }
    const std::size_t header = text.find(begin);
    const std::size_t label = header + begin.size();
    const std::size_t labelEnd = header == npos ? npos : text.find(dashes, label);
    if (labelEnd == npos) {
        return Error{"the text has no line that begins a PEM block"};
    }
    const auto name = text.substr(label, labelEnd - label);
    if (name == "ENCRYPTED PRIVATE KEY") {
        return Error{"the private key is encrypted: decrypt it first"};
    }
    const auto kind = kindOf(name);
    if (!kind) {
        return Error{
            "the PEM block is not labelled as a key: PRIVATE KEY, RSA PRIVATE KEY, PUBLIC KEY and RSA PUBLIC KEY are"};
    }
    const std::size_t body = labelEnd + dashes.size();
    const std::size_t bodyEnd = text.find(dashes, body);
    if (bodyEnd == npos || !text.substr(bodyEnd).starts_with("-----END " + std::string(name) + "-----")) {
        return Error{"the PEM block does not end with the line that belongs to its first"};
    }
    const auto base64Text = text.substr(body, bodyEnd - body);
    if (base64Text.find(':') != npos) { // RFC 1421 puts fields in front, which decoding would take for base64
        return base64Text.find("ENCRYPTED") != npos ? Error{"the private key is encrypted: decrypt it first"}
                                                    : Error{"the PEM block has fields before its base64 text"};
    }
    PEM result;
    result.kind = *kind;
    if (!base64::decode(base64Text, base64::Unknown::ignore, result.der.vector())) {
        return Error{"the PEM block is not base64 text"};
    }
    return result;
}

} // namespace zentavo::rsa
