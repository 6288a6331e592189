#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/inapp/DeliveryTrace.h"
#include "zentavo/inapp/WebContent.h"

namespace zentavo {

/// How often campaigns were shown and clicked on this device. The counters live in three texts of the store and nowhere
/// else; a period is one of the calendar (this day, this month), not a length of time, so what is used up at 23:59 is
/// free again at midnight.
///
/// Any thread. Each count is one step of the store that nothing comes between, also no other process, so none is lost.
/// No lock of the SDK's own is involved.
class Frequency {
public:
    /// Entries by id in decimal: {"timeExpire": seconds since 1970, "impression": 2, …}
    struct Counters {
        Map story;
        Map destination;
        Map zone;

        /// Under the members "story", "destination" and "zone".
        Map map() const { return {{"story", story}, {"destination", destination}, {"zone", zone}}; }
    };

    /// What the store holds and has not expired. Nothing is written.
    static Counters load(const Zentavo::State& state);

    /// The first limit that `content` has used up, in the order story, destination, zone; none when it may be shown.
    static std::optional<DeliveryTrace::Capped> check(const Counters& counters, const WebContent& content);

    /// The three limits of a campaign, and the ids that they count under.
    struct Subject {
        std::int64_t storyId = 0;
        std::int64_t destinationId = 0;
        std::int64_t zoneId = 0;
        std::optional<FrequencyCapping> frequencyCapping;
        std::optional<DestinationFrequencyCapping> destinationFrequencyCapping;
        std::optional<ZoneFrequencyCapping> zoneFrequencyCapping;

        static Subject of(const WebContent& content);
    };
    /// Counts one more `event` under every level that `subject` has a limit for.
    static void record(const Zentavo::State& state, const Subject& subject, const std::string& event);

    // --- The arithmetic of one stored text ---------------------------------------------------------------------------

    /// The entries of one level that live at `now`, seconds since 1970. A text that is no JSON object has none.
    static Map entries(std::string_view stored, double now);
    /// `stored` with one more `event` for `id`, whose entry now lasts until `expiry`. None when the count cannot go any
    /// higher.
    static std::optional<std::string> counted(std::string_view stored, double now, std::int64_t id,
                                              const std::string& event, double expiry);
    /// When a count under `timeUnit` that is made now expires: just before the period ends, and at once for a unit that
    /// is none. A fault when the calendar cannot tell.
    static double expiry(const platform::Platform& platform, const std::optional<std::string>& timeUnit);
};

} // namespace zentavo
