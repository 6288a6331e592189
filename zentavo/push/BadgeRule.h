#pragma once

#include <cstdint>
#include <optional>

#include "zentavo/foundation/Value.h"

namespace zentavo {

/// What a badge rule comes to. The stored number is only changed where `stored` says so.
struct BadgeOutcome {
    std::optional<std::int64_t> shown; ///< the number for the icon; none where something else than a number is stored
    std::optional<std::int64_t> stored;
    bool overflow = false; ///< the number would leave 64 bits; nothing else holds then

    friend bool operator==(const BadgeOutcome&, const BadgeOutcome&) = default;
};

/// Applies the map "badge" of a payload to the stored number, if there is one. "increase" adds. "set_to" goes up by one
/// at most, however large its value: pushes that arrive late or twice then do not make the number jump. "do_not_set"
/// clears it. Unlike the record `Badge`, the map is read leniently: a rule that lacks something leaves the stored
/// number on show.
BadgeOutcome applyBadgeRule(const std::optional<Value>& stored, const Map& rule);

} // namespace zentavo
