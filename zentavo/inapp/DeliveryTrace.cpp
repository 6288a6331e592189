#include "zentavo/inapp/DeliveryTrace.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/Printable.h"
#include "zentavo/foundation/UTF8.h"

namespace zentavo {

namespace {

/// More campaigns than this in one line help nobody.
constexpr std::size_t namedCampaigns = 10;
/// Bytes of a name that others chose.
constexpr std::size_t longestName = 80;
constexpr std::size_t longestProblem = 400;

const char* words(DeliveryTrace::Outcome outcome) noexcept {
    switch (outcome) {
    case DeliveryTrace::Outcome::noAnswer:
        return "no answer";
    case DeliveryTrace::Outcome::undecodable:
        return "the answer cannot be read";
    case DeliveryTrace::Outcome::nothingToShow:
        return "nothing to show";
    case DeliveryTrace::Outcome::noUserInterface:
        return "dropped, no user interface can show it";
    case DeliveryTrace::Outcome::alreadyShowing:
        return "dropped, another message is on screen";
    case DeliveryTrace::Outcome::presented:
        return "presented";
    }
    return "";
}

const char* words(DeliveryTrace::ClosedBy closedBy) noexcept {
    switch (closedBy) {
    case DeliveryTrace::ClosedBy::page:
        return "closed by its page";
    case DeliveryTrace::ClosedBy::click:
        return "closed by a click";
    case DeliveryTrace::ClosedBy::overlay:
        return "closed by a tap beside it";
    case DeliveryTrace::ClosedBy::pageProcessDied:
        return "closed because its web process died";
    case DeliveryTrace::ClosedBy::replaced:
        return "closed because another message took its place";
    case DeliveryTrace::ClosedBy::noContent:
        return "closed because its content cannot be asked for";
    case DeliveryTrace::ClosedBy::windowGone:
        return "closed with the window";
    }
    return "";
}

const char* name(DeliveryTrace::Outcome outcome) noexcept {
    static constexpr const char* names[] = {"noAnswer",        "undecodable",    "nothingToShow",
                                            "noUserInterface", "alreadyShowing", "presented"};
    return names[static_cast<std::size_t>(outcome)];
}

const char* name(DeliveryTrace::ClosedBy closedBy) noexcept {
    static constexpr const char* names[] = {"page",     "click",     "overlay",   "pageProcessDied",
                                            "replaced", "noContent", "windowGone"};
    return names[static_cast<std::size_t>(closedBy)];
}

/// As `printable`, for JSON: messages of the system come in the locale's encoding.
std::string printableUTF8(std::string_view bytes, std::size_t longest) {
    constexpr std::size_t longestCharacter = 4;
    const std::string_view seen = bytes.substr(0, longest + longestCharacter);
    std::string text;
    for (std::size_t at = 0; at < seen.size();) {
        const std::size_t length = utf8::characterLength(seen, at);
        text += length != 0 ? seen.substr(at, length) : std::string_view("\xEF\xBF\xBD");
        at += std::max<std::size_t>(length, 1);
    }
    return printable(text, longest);
}

Map mapOf(const DeliveryTrace::Campaign& campaign) {
    Map map{{"story_id", campaign.storyId}, {"template", printableUTF8(campaign.templateType, longestName)}};
    if (campaign.capped) {
        const auto& capped = *campaign.capped;
        map.set("capped", Map{{"level", name(capped.level)},
                              {"event", printableUTF8(capped.event, longestName)},
                              {"counter", capped.counter},
                              {"limit", capped.limit}});
    } else if (campaign.typeDropped) {
        map.set("type_dropped", true);
    }
    return map;
}

std::string describe(const DeliveryTrace::Campaign& campaign) {
    std::string text =
        "; story " + std::to_string(campaign.storyId) + " (" + printable(campaign.templateType, longestName) + ")";
    if (campaign.capped) {
        const auto& capped = *campaign.capped;
        text += std::string(" capped by ") + name(capped.level) + ": " + printable(capped.event, longestName) + " " +
                std::to_string(capped.counter) + " of " + std::to_string(capped.limit);
    } else if (campaign.typeDropped) {
        text += " is of a type that is not shown";
    }
    return text;
}

} // namespace

const char* name(CappingLevel level) noexcept {
    switch (level) {
    case CappingLevel::story:
        return "story";
    case CappingLevel::destination:
        return "destination";
    case CappingLevel::zone:
        return "zone";
    }
    return "";
}

std::string DeliveryTrace::text() const {
    std::string line = "Delivery for \"" + printable(eventName, longestName) + "\": " + std::to_string(receivedBytes) +
                       " bytes, " + std::to_string(campaigns.size()) +
                       (campaigns.size() == 1 ? " campaign" : " campaigns");
    const std::size_t named = std::min(campaigns.size(), namedCampaigns);
    for (std::size_t i = 0; i < named; ++i) {
        line += describe(campaigns[i]);
    }
    if (campaigns.size() > named) {
        line += "; " + std::to_string(campaigns.size() - named) + " more";
    }
    if (chosen) {
        line += "; chosen: story " + std::to_string(campaigns[*chosen].storyId);
    }
    line += "; ";
    line += words(outcome);
    if (!problem.empty()) {
        line += " (" + printable(problem, longestProblem) + ")";
    }
    if (closedBy) {
        line += "; ";
        line += words(*closedBy);
    }
    return line;
}

std::string DeliveryTrace::json() const {
    const std::size_t named = std::min(campaigns.size(), mostInJSON);
    List list;
    std::transform(campaigns.begin(), campaigns.begin() + static_cast<std::ptrdiff_t>(named), std::back_inserter(list),
                   mapOf);
    Map map{{"event", printableUTF8(eventName, longestName)},
            {"received_bytes", receivedBytes},
            {"outcome", name(outcome)},
            {"campaigns", std::move(list)}};
    if (chosen && *chosen < named) {
        map.set("chosen", *chosen);
    }
    if (!problem.empty()) {
        map.set("problem", printableUTF8(problem, longestProblem));
    }
    if (closedBy) {
        map.set("closed_by", name(*closedBy));
    }
    return zentavo::json::write(map).value(); // all text in it is UTF-8 by now
}

} // namespace zentavo
