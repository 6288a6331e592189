#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/platform/Random.h"

namespace zentavo::desktop {

/// What a receiver of encrypted pushes (RFC 8291) has: a pair of keys on the curve P-256, and a secret that it shares
/// with its senders. A value; the secret parts are overwritten when it goes. One object on one thread at a time, or
/// read by many.
class ZENTAVO_EXPORT WebPushKeys {
public:
    static constexpr std::size_t privateBytes = 32;
    static constexpr std::size_t publicBytes = 65; ///< not compressed
    static constexpr std::size_t authBytes = 16;
    using Private = std::array<std::uint8_t, privateBytes>;
    using Public = std::array<std::uint8_t, publicBytes>;
    using Auth = std::array<std::uint8_t, authBytes>;

    static WebPushKeys make(platform::Random& random);
    /// What `text` wrote.
    static Result<WebPushKeys> read(std::string_view text);

    ~WebPushKeys();
    WebPushKeys(const WebPushKeys&) = default;
    WebPushKeys& operator=(const WebPushKeys&) = default;

    /// For a store that nobody else may read: it holds the private key.
    std::string text() const;
    /// For senders, in base64url.
    std::string publicKeyText() const;
    std::string authText() const;

    const Private& privateKey() const noexcept { return privateKey_; }
    const Public& publicKey() const noexcept { return publicKey_; }
    const Auth& auth() const noexcept { return auth_; }

private:
    WebPushKeys() = default;
    /// Reckons the public key. False where the private one is none of the curve's.
    bool complete();

    Private privateKey_{};
    Public publicKey_{};
    Auth auth_{};
};

} // namespace zentavo::desktop
