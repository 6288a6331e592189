#include "devserver/TraceReport.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "devserver/BodyChecks.h"
#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

/// Texts are shown on the page and kept for long.
constexpr std::size_t longestText = 500;

constexpr std::array<MemberRule, 7> recordRules{{{"event", Kind::text},
                                                 {"received_bytes", Kind::integer},
                                                 {"outcome", Kind::filledText},
                                                 {"campaigns", Kind::listOfMaps},
                                                 {"chosen", Kind::integer, Need::optional},
                                                 {"problem", Kind::text, Need::optional},
                                                 {"closed_by", Kind::filledText, Need::optional}}};
constexpr std::array<MemberRule, 4> campaignRules{{{"story_id", Kind::integer},
                                                   {"template", Kind::text},
                                                   {"capped", Kind::map, Need::optional},
                                                   {"type_dropped", Kind::any, Need::optional}}};
constexpr std::array<MemberRule, 4> cappedRules{
    {{"level", Kind::filledText}, {"event", Kind::text}, {"counter", Kind::integer}, {"limit", Kind::integer}}};

using Words = std::pair<std::string_view, std::string_view>;
constexpr std::array<Words, 6> outcomes{{{"noAnswer", "not shown: the app got no answer"},
                                         {"undecodable", "not shown: the app cannot read the answer"},
                                         {"nothingToShow", "not shown"},
                                         {"noUserInterface", "not shown: no user interface can show it"},
                                         {"alreadyShowing", "not shown: another message was on screen"},
                                         {"presented", "shown"}}};
constexpr std::array<Words, 7> closings{{{"page", "closed by its page"},
                                         {"click", "closed by a click"},
                                         {"overlay", "closed by a tap beside it"},
                                         {"pageProcessDied", "closed because its web process died"},
                                         {"replaced", "closed because another message took its place"},
                                         {"noContent", "closed because its content cannot be asked for"},
                                         {"windowGone", "closed with the window"}}};
constexpr std::array<Words, 3> levels{{{"story", ""}, {"destination", ""}, {"zone", ""}}};

std::string text(const Map& map, std::string_view name) {
    const std::string* found = textMember(map, name);
    return found != nullptr ? utf8Text(found->substr(0, longestText)) : std::string();
}
std::int64_t integer(const Map& map, std::string_view name) {
    const Value* found = map.find(name);
    return found != nullptr ? found->exactInt64().value_or(0) : 0;
}

/// The text called `name`, which has to be one of `known` if it is there.
template <std::size_t count>
std::string oneOf(const std::array<Words, count>& known, const Map& map, std::string_view name, Problems& problems) {
    const std::string found = text(map, name);
    if (!found.empty() && std::ranges::find(known, found, &Words::first) == known.end()) {
        problems.add(std::string(name) + " is " + inQuotes(found) + ", which is none");
    }
    return found;
}

template <std::size_t count>
std::string_view wordsFor(const std::array<Words, count>& known, std::string_view name) {
    const auto found = std::ranges::find(known, name, &Words::first);
    return found != known.end() ? found->second : std::string_view();
}

TraceReport::Campaign campaignFrom(const Map& map, const std::string& path, Problems& problems) {
    checkMembers(map, path, campaignRules, Others::refused, problems);
    TraceReport::Campaign campaign{integer(map, "story_id"), {}};
    if (const Map* capped = mapMember(map, "capped")) {
        checkMembers(*capped, path + ".capped", cappedRules, Others::refused, problems);
        campaign.leftOut = "capped by " + oneOf(levels, *capped, "level", problems) + ": " + text(*capped, "event") +
                           " " + std::to_string(integer(*capped, "counter")) + " of " +
                           std::to_string(integer(*capped, "limit"));
    } else if (map.contains("type_dropped")) {
        campaign.leftOut = "of a type that is not shown";
    }
    return campaign;
}

} // namespace

std::optional<TraceReport> TraceReport::from(const Map& record, Problems& problems) {
    checkMembers(record, "", recordRules, Others::refused, problems);
    if (!problems.empty()) {
        return std::nullopt;
    }
    TraceReport report;
    report.event = text(record, "event");
    report.outcome = oneOf(outcomes, record, "outcome", problems);
    report.problem = text(record, "problem");
    report.closedBy = oneOf(closings, record, "closed_by", problems);
    for (const Value& each : *record.find("campaigns")->asList()) {
        const std::string path = "campaigns[" + std::to_string(report.campaigns.size()) + "]";
        report.campaigns.push_back(campaignFrom(*each.asMap(), path, problems));
    }
    if (record.contains("chosen")) {
        const std::int64_t chosen = integer(record, "chosen");
        if (chosen < 0 || std::cmp_greater_equal(chosen, report.campaigns.size())) {
            problems.add("chosen is " + std::to_string(chosen) + ", where no campaign is");
        } else {
            report.chosen = static_cast<std::size_t>(chosen);
        }
    }
    return problems.empty() ? std::optional(std::move(report)) : std::nullopt;
}

std::string TraceReport::verdict() const {
    std::string words(wordsFor(outcomes, outcome));
    if (!problem.empty()) {
        words += ", " + problem;
    }
    if (!closedBy.empty()) {
        words += ", then ";
        words += wordsFor(closings, closedBy);
    }
    if (outcome == "nothingToShow") {
        std::string reasons;
        for (const Campaign& campaign : campaigns) {
            reasons += (reasons.empty() ? ": " : "; ") + ("story " + std::to_string(campaign.story)) + " is " +
                       campaign.leftOut;
            if (reasons.size() > longestText) {
                reasons += " …";
                break;
            }
        }
        words += reasons.empty() ? ": nothing was offered" : reasons;
    }
    return words;
}

} // namespace zentavo::devserver
