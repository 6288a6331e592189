#pragma once

#include <cstddef>
#include <string_view>

#include "zentavo/foundation/Export.h"

/// Strict UTF-8 (RFC 3629): no surrogates, no overlong forms, nothing beyond U+10FFFF.
namespace zentavo::utf8 {

/// The bytes of the character at `position`, 1 to 4; 0 where no character starts. `position` lies inside `text`.
ZENTAVO_EXPORT std::size_t characterLength(std::string_view text, std::size_t position) noexcept;

ZENTAVO_EXPORT bool isValid(std::string_view text) noexcept;

} // namespace zentavo::utf8
