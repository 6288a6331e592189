#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Result.h"

/// Encryption of a push for one receiver: RFC 8291 over the content coding aes128gcm of RFC 8188, in one record.
namespace zentavo::devserver::webpush {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::size_t publicKeyBytes = 65; // an uncompressed point of P-256
inline constexpr std::size_t authBytes = 16;
/// What encryption adds: salt, record size, key length, key, the end mark and the tag.
inline constexpr std::size_t overhead = 16 + 4 + 1 + publicKeyBytes + 1 + 16;

/// What a receiver hands out, so that only it can read.
struct Receiver {
    Bytes publicKey;
    Bytes auth;
};

/// What a sender uses for one message and never again.
struct Sender {
    Bytes privateKey; // 32
    Bytes publicKey;
    Bytes salt; // 16

    static Result<Sender> random();
};

/// `plain` may have as many bytes as fit in a record of 4096. The error says what is wrong with the keys.
Result<std::string> encrypt(std::string_view plain, const Receiver& receiver, const Sender& sender);

} // namespace zentavo::devserver::webpush
