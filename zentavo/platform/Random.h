#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "zentavo/foundation/Export.h"

namespace zentavo::platform {

/// Chance. Any thread.
class ZENTAVO_EXPORT Random {
public:
    virtual ~Random() = default;

    /// Fills `bytes` from a source fit for keys and identifiers.
    virtual void fill(std::span<std::uint8_t> bytes) = 0;

    /// 0 up to but excluding `bound`, every one as likely (values that would favour the small ones are drawn again).
    /// 0 for a bound of 0.
    std::uint64_t below(std::uint64_t bound);
    /// A new random UUID, upper case.
    std::string uuidText();
};

} // namespace zentavo::platform
