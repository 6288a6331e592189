#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

/// How a push asks for a rating. A plain value.
struct ZENTAVO_EXPORT RatingSettings {
    std::string type;       ///< the kind of icon
    std::int64_t scale = 0; ///< how many icons
    // Icons: URLs of pictures, or names like "Star.Selected".
    std::string selectedIcon;
    std::string unselectedIcon;
    std::optional<std::vector<std::string>> ratingText; ///< captions of the levels, from the lowest

    static RatingSettings decode(KeyedDecoder& decoder);
    /// Without `ratingText` where it is absent.
    Map encode() const;

    friend bool operator==(const RatingSettings&, const RatingSettings&) = default;
};

} // namespace zentavo
