#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "devserver/Problems.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::devserver {

/// What an app says became of one delivery: the SDK's `DeliveryTrace` in its JSON form. It knows what no server can see.
struct TraceReport {
    static constexpr std::size_t maximumBytes = 256U << 10U;
    /// Of more campaigns than these an app names only the first.
    static constexpr std::size_t mostCampaigns = 500;

    struct Campaign {
        std::int64_t story = 0;
        /// Why it was left out, in words; empty where it was not.
        std::string leftOut;
    };

    std::string event;
    std::string outcome;
    std::string problem;
    /// Empty until a message that was shown is closed.
    std::string closedBy;
    std::vector<Campaign> campaigns;
    std::optional<std::size_t> chosen;

    /// None after adding what is wrong with `record`.
    static std::optional<TraceReport> from(const Map& record, Problems& problems);

    /// Whether the app could read the answer, so that `campaigns` are what was offered to it.
    bool isRead() const { return outcome != "noAnswer" && outcome != "undecodable"; }
    bool isPresented() const { return outcome == "presented"; }
    /// Why nothing was shown, or what became of what was.
    std::string verdict() const;
};

} // namespace zentavo::devserver
