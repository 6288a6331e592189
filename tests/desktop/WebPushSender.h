#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ports/desktop/WebPushKeys.h"

namespace zentavo::tests {

/// Plays the sender of encrypted pushes (RFC 8291), with a key and a salt that are always the same. It stands on other
/// functions of OpenSSL than the receiver does.
struct WebPushSender {
    std::uint32_t recordSize = 4096;
    /// What follows the text inside the record: the byte that ends it, and padding.
    std::string ending = "\x02";
    /// In place of the receiver's own: what a wrong sender would take.
    std::string publicKey;
    std::string auth;

    std::string encrypt(const desktop::WebPushKeys& receiver, std::string_view text) const;

    /// base64url, as RFCs and registrations write bytes.
    static std::string bytes(std::string_view base64url);
};

} // namespace zentavo::tests
