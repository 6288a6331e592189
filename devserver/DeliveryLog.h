#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/Campaigns.h"
#include "devserver/Service.h"
#include "devserver/TraceReport.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo::devserver {

/// The last deliveries, and what was heard of each since: why something was shown, or was not, as far as this end can
/// know, or as apps say themselves. For any thread.
class DeliveryLog {
public:
    static constexpr std::size_t mostKept = 500;

    /// Keeps a delivery that offers `campaigns` and returns its number, which counts from 1.
    std::uint64_t offered(Twin twin, const Findings& findings, const std::vector<const Campaign*>& campaigns);
    /// Keeps a request that was refused for its problems.
    void refused(Twin twin, const Findings& findings);

    /// The app asked how the campaign is laid out.
    void layoutAsked(std::int64_t story);
    /// The app asked for the campaign's content; `refusal` says why it did not get it, empty when it did. Returns the
    /// delivery that it belongs to, 0 when none is kept.
    std::uint64_t contentAsked(std::int64_t story, const std::string& refusal);
    /// A tracking URL was asked for: "impression", "viewable" or "click".
    void tracked(std::uint64_t delivery, std::int64_t story, std::string_view what);

    /// The app says what became of a delivery. A trace has no number to tell it by, so it belongs to the newest of its
    /// event that offered its campaigns and has none yet; one that tells of a closing, to the newest that it continues.
    /// Returns the delivery, 0 when none is kept.
    std::uint64_t traced(const TraceReport& report);

    void clear();
    /// The newest first.
    List list() const;

private:
    struct Offer {
        std::string name;
        std::int64_t story = 0;
        std::string type;
        bool handWritten = false;
        bool neverShown = false;
        /// Its limits in words; empty for none.
        std::string limits;
        bool layoutAsked = false;
        bool contentGiven = false;
        std::string contentRefused;
        std::int64_t impressions = 0;
        std::int64_t viewables = 0;
        std::int64_t clicks = 0;

        std::string verdict() const;
        Map map(const TraceReport::Campaign* traced) const;
    };
    struct Entry {
        std::uint64_t number = 0;
        std::chrono::system_clock::time_point time;
        Twin twin = Twin::production;
        std::string event;
        std::string uid;
        std::string refusal;
        std::vector<Offer> offers;
        std::optional<TraceReport> trace;

        bool fits(const TraceReport& report) const;
        std::string verdict() const;
        Map map() const;
    };

    void keep(Entry entry) ZENTAVO_REQUIRES(mutex_);
    /// The newest offer of the story; null when none is kept.
    Offer* newest(std::int64_t story, std::uint64_t& delivery) ZENTAVO_REQUIRES(mutex_);

    mutable Mutex mutex_;
    std::deque<Entry> entries_ ZENTAVO_GUARDED_BY(mutex_);
    std::uint64_t lastNumber_ ZENTAVO_GUARDED_BY(mutex_) = 0;
};

} // namespace zentavo::devserver
