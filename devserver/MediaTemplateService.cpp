#include "devserver/MediaTemplateService.h"

#include <array>
#include <chrono>

#include "devserver/DeliveryService.h"
#include "devserver/EventCheck.h"
#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

constexpr std::string_view infoPath = "/interaction/media-template/info";
constexpr std::string_view contentPath = "/interaction/media-template/view-info";

constexpr std::array<QueryRule, 2> queryRules{{{"portal_id"}, {"prop_id"}}};
constexpr std::array<MemberRule, 5> selectedRules{{
    {"format", Kind::text},
    {"selected_story_id", Kind::integer},
    {"selected_variant_id", Kind::integer},
    {"selected_zone_id", Kind::integer},
    {"selected_view_id", Kind::text},
}};

void checkSelection(const Campaign& campaign, const Map& body, Problems& problems) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 2> ids{
        {{"selected_variant_id", "variantId"}, {"selected_zone_id", "zoneId"}}};
    for (const auto& [name, key] : ids) {
        const Value* value = body.find(name);
        const auto selected = value != nullptr ? value->exactInt64() : std::nullopt;
        if (selected && *selected != campaign.id(key)) {
            problems.add(std::string(name) + " is " + std::to_string(*selected) + "; story " +
                         std::to_string(campaign.story()) + " was offered with " + std::to_string(campaign.id(key)));
        }
    }
}

void checkWord(const Map& body, std::string_view name, std::string_view word, Problems& problems) {
    const std::string* text = textMember(body, name);
    if (text != nullptr && *text != word) {
        problems.add(std::string(name) + " is " + inQuotes(*text) + "; expected " + inQuotes(word));
    }
}

Answer notFound(std::int64_t story) {
    return {404, {{"error", "story " + std::to_string(story) + " is no hand-written campaign"}}};
}

} // namespace

std::vector<Route> MediaTemplateService::routes() const { return {{"POST", infoPath}, {"POST", contentPath}}; }

Answer MediaTemplateService::answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                                    Findings& findings) {
    describeEvent(body, findings);
    Problems& problems = findings.problems;
    checkEvent(request, path, twin, body, selectedRules, problems);
    checkWord(body, "format", "json", problems);
    checkWord(body, "selected_view_id", "optin", problems);
    const Value* selected = body.find("selected_story_id");
    const std::int64_t story = selected != nullptr ? selected->exactInt64().value_or(0) : 0;
    const Campaign* campaign = campaigns_->find(story);
    if (campaign != nullptr && !campaign->isHandWritten()) {
        campaign = nullptr;
    }
    if (campaign != nullptr) {
        checkSelection(*campaign, body, problems);
    }
    if (path == contentPath) {
        return content(request, campaign, story, findings);
    }
    checkQuery(request.query, queryRules, problems);
    if (problems.empty()) {
        log_->layoutAsked(story);
    }
    return campaign != nullptr ? Answer{200, {{"data", *campaign->templateInfo}}} : notFound(story);
}

Answer MediaTemplateService::content(const IncomingRequest& request, const Campaign* campaign, std::int64_t story,
                                     Findings& findings) {
    using namespace std::chrono;
    const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    proofs_.check(request.query, request.body, now, findings.problems);
    const Problems& problems = findings.problems;
    const std::uint64_t delivery =
        log_->contentAsked(story, problems.empty() ? std::string() : problems.list().front());
    if (campaign == nullptr) {
        return notFound(story);
    }
    const Tracking tracking{serverURL(request), delivery, story};
    return {200,
            {{"data", Map{{"content", Map{{"html", filled(*campaign->html, tracking)}}},
                          {"trackingUrls",
                           Map{{"impression", tracking.url("impression")}, {"viewable", tracking.url("viewable")}}}}}}};
}

} // namespace zentavo::devserver
