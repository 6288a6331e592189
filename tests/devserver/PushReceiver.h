#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <openssl/evp.h>

#include "devserver/WebPushEncryption.h"

namespace zentavo::devserver {

/// A device that takes encrypted pushes. Its way of reading them is written for itself: the key derivation is the crypto
/// library's, and nothing of the server's own code is used.
class PushReceiver {
public:
    PushReceiver();

    const webpush::Receiver& keys() const noexcept { return keys_; }
    /// "#p256dh=…&auth=…".
    std::string fragment() const;
    /// None for what cannot be read.
    std::optional<std::string> open(std::string_view message) const;

private:
    std::shared_ptr<EVP_PKEY> key_;
    webpush::Receiver keys_;
};

} // namespace zentavo::devserver
