#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Export.h"

/// RFC 4648.
namespace zentavo::base64 {

enum class Unknown { refuse, ignore };

/// The standard alphabet, with padding.
ZENTAVO_EXPORT std::string encode(std::span<const std::uint8_t> bytes);
/// The standard alphabet. `Unknown::ignore` passes over characters outside it (line breaks of PEM); padding is needed
/// with `refuse` and optional with `ignore`. None for text that no encoder writes.
ZENTAVO_EXPORT std::optional<std::vector<std::uint8_t>> decode(std::string_view text,
                                                               Unknown unknown = Unknown::refuse);
/// The same into the caller's hands, for secrets: no other block of memory sees them. `bytes` is replaced; where the
/// text is refused, it holds what came before the fault.
ZENTAVO_EXPORT bool decode(std::string_view text, Unknown unknown, std::vector<std::uint8_t>& bytes);
/// The URL-safe alphabet of section 5, without padding; decoding accepts padding.
ZENTAVO_EXPORT std::string encodeURL(std::span<const std::uint8_t> bytes);
ZENTAVO_EXPORT std::optional<std::vector<std::uint8_t>> decodeURL(std::string_view text);

} // namespace zentavo::base64
