#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "zentavo/foundation/KeyedDecoder.h"
#include "zentavo/foundation/Value.h"

namespace zentavo {

/// How often something may happen within a calendar period. A limit without `event` or `timeUnit`, or with a `value`
/// below 1, limits nothing.
struct CappingLimit {
    std::optional<std::string> event;    ///< what is counted: "impression", "click"
    std::optional<std::int64_t> value;   ///< the campaign is held back once the count has reached this
    std::optional<std::string> timeUnit; ///< "hourly", "daily", "weekly", "monthly", "yearly"

    friend bool operator==(const CappingLimit&, const CappingLimit&) = default;

protected:
    void read(KeyedDecoder& decoder);
    void write(Map& map) const;
};

/// The limit of one campaign.
struct FrequencyCapping : CappingLimit {
    /// What is counted per; only "person", in any case, is enforced.
    std::optional<std::string> object;

    static FrequencyCapping decode(KeyedDecoder& decoder);
    Map encode() const;
    friend bool operator==(const FrequencyCapping&, const FrequencyCapping&) = default;
};

/// The limit that all campaigns of one destination share.
struct DestinationFrequencyCapping : CappingLimit {
    static DestinationFrequencyCapping decode(KeyedDecoder& decoder);
    Map encode() const;
};

/// The limit that all campaigns of one zone share.
struct ZoneFrequencyCapping : CappingLimit {
    static ZoneFrequencyCapping decode(KeyedDecoder& decoder);
    Map encode() const;
};

} // namespace zentavo
