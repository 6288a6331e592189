#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ports/desktop/WebPushKeys.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::desktop {

/// What an encrypted push looks like (RFC 8188, RFC 8291): a head of 16 bytes of salt, the record size in four, the
/// length of the sender's public key in one, and that key; then one record, whose last 16 bytes prove it.
namespace web_push {

inline constexpr std::size_t saltBytes = 16;
inline constexpr std::size_t headBytes = saltBytes + 4 + 1 + WebPushKeys::publicBytes;
inline constexpr std::size_t tagBytes = 16;
/// Longer messages are refused. Services for pushes carry 4096 bytes in all; some count without the head.
inline constexpr std::size_t maximumBytes = 4096 + headBytes;

/// The text that was encrypted for `keys`. Any thread. The error says what is wrong with the message, and nothing about
/// the keys.
ZENTAVO_EXPORT Result<std::string> decrypt(const WebPushKeys& keys, std::string_view message);

} // namespace web_push
} // namespace zentavo::desktop
