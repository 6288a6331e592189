#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "zentavo/foundation/Export.h"

namespace zentavo::uuid {

/// Upper-case 8-4-4-4-12 text of 16 bytes as they are (RFC 4122).
ZENTAVO_EXPORT std::string text(const std::array<std::uint8_t, 16>& bytes);
/// Sets the version 4 and variant bits: makes a random UUID of 16 random bytes.
ZENTAVO_EXPORT std::array<std::uint8_t, 16> version4(std::array<std::uint8_t, 16> random) noexcept;

} // namespace zentavo::uuid
