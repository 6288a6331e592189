#pragma once

#include <cstdint>
#include <string_view>

#include "zentavo/foundation/Export.h"

namespace zentavo::websocket {

/// Checks text that arrives in parts, cut anywhere. Strict: no surrogates, no overlong forms, nothing beyond U+10FFFF.
class ZENTAVO_EXPORT UTF8Validator {
public:
    /// False as soon as no continuation could make the text valid; then for ever.
    bool feed(std::string_view part) noexcept;
    /// Whether the text may end here: no character is half there.
    bool complete() const noexcept { return valid_ && missing_ == 0; }
    void reset() noexcept { *this = UTF8Validator(); }

private:
    bool step(std::uint8_t byte) noexcept;

    bool valid_ = true;
    std::uint8_t missing_ = 0; ///< bytes that the current character still lacks
    std::uint8_t low_ = 0x80;  ///< what the next of them may be
    std::uint8_t high_ = 0xBF;
};

} // namespace zentavo::websocket
