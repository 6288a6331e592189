#pragma once

#include <cstdint>
#include <string>

#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

/// What a push does to the number on the app's icon. A plain value.
struct ZENTAVO_EXPORT Badge {
    std::string type; ///< "increase", "set_to" or "do_not_set"; others clear the number
    std::int64_t value = 0;

    static Badge decode(KeyedDecoder& decoder);
    Map encode() const;

    friend bool operator==(const Badge&, const Badge&) = default;
};

} // namespace zentavo
