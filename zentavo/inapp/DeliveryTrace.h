#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/Export.h"

namespace zentavo {

/// Which of its three limits held a campaign back.
enum class CappingLevel { story, destination, zone };
/// "story", "destination", "zone"
ZENTAVO_EXPORT const char* name(CappingLevel level) noexcept;

/// What became of one answer of the delivery service.
struct ZENTAVO_EXPORT DeliveryTrace {
    enum class Outcome {
        noAnswer,        ///< the service could not be asked; `problem` says why
        undecodable,     ///< the answer is none; `problem` names the first field that is wrong
        nothingToShow,   ///< no campaign was left to choose from
        noUserInterface, ///< no toolkit is attached, or it cannot show web pages
        alreadyShowing,  ///< another message was on screen
        presented,
    };
    enum class ClosedBy {
        page,
        click,
        overlay, ///< the user, by a tap beside it
        pageProcessDied,
        replaced,
        noContent,  ///< the request for its content could not be signed
        windowGone, ///< the host's window was closed under it
    };

    struct Capped {
        CappingLevel level = CappingLevel::story;
        std::string event;
        std::int64_t limit = 0;
        std::int64_t counter = 0;
    };
    struct Campaign {
        std::int64_t storyId = 0;
        std::string templateType;
        std::optional<Capped> capped;
        /// Its template type is never shown.
        bool typeDropped = false;
    };

    std::string eventName;
    std::size_t receivedBytes = 0;
    /// One line of a few hundred bytes at most.
    std::string problem;
    /// In the order of the answer; empty where it could not be decoded.
    std::vector<Campaign> campaigns;
    /// Position in `campaigns`.
    std::optional<std::size_t> chosen;
    Outcome outcome = Outcome::noAnswer;
    /// None until a presented message is closed; then the trace is handed out a second time.
    std::optional<ClosedBy> closedBy;

    /// One line that says all of it, long lists of campaigns and long texts cut short, without control characters.
    std::string text() const;
    /// All of it as a JSON object, for a tool: "event", "received_bytes", "outcome", "campaigns" (the first
    /// `mostInJSON`), each with "story_id", "template" and, where so, "type_dropped" or "capped" ("level", "event",
    /// "counter", "limit"); and where they are there "chosen" (a position in them, absent where it lies
    /// beyond them), "problem" and "closed_by". Outcome, "closed_by" and "level" are the enumerators' names. Texts as in
    /// `text`, what is no UTF-8 in them as U+FFFD. At most 256 KiB.
    std::string json() const;
    static constexpr std::size_t mostInJSON = 500;
};

} // namespace zentavo
