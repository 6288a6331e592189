#pragma once

#include <string>

#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

/// One picture of a carousel. A plain value.
struct ZENTAVO_EXPORT Slide {
    std::string imageUrl;
    std::string action; ///< the sender's word for what a tap does
    std::string url;    ///< what a tap opens

    static Slide decode(KeyedDecoder& decoder);
    Map encode() const;

    friend bool operator==(const Slide&, const Slide&) = default;
};

} // namespace zentavo
