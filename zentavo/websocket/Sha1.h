#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace zentavo::websocket {

/// SHA-1 (FIPS 180-4), for the one place where the protocol wants it: as proof that a server understood, not as
/// protection.
std::array<std::uint8_t, 20> sha1(std::string_view text);

} // namespace zentavo::websocket
