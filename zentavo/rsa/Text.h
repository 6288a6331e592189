#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Base64.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::rsa {

inline std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Base64 text as it arrives, possibly broken into lines.
inline Result<std::vector<std::uint8_t>> fromBase64(std::string_view text) {
    auto bytes = base64::decode(text, base64::Unknown::ignore);
    if (!bytes) {
        return Error{"this is not base64 text"};
    }
    return std::move(*bytes);
}

} // namespace zentavo::rsa
