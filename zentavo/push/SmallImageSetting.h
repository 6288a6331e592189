#pragma once

#include <string>

#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

/// Where the template with a small image has it. A plain value.
struct ZENTAVO_EXPORT SmallImageSetting {
    std::string imageAlignment; ///< the side

    static SmallImageSetting decode(KeyedDecoder& decoder);
    Map encode() const;

    friend bool operator==(const SmallImageSetting&, const SmallImageSetting&) = default;
};

} // namespace zentavo
