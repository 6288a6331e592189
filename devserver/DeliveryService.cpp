#include "devserver/DeliveryService.h"

#include <algorithm>
#include <array>

#include "devserver/EventCheck.h"
#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

constexpr std::string_view deliveryPath = "/interaction/v2";
constexpr std::string_view mediaPath = "/interaction/app";

constexpr std::array<QueryRule, 2> queryRules{{{"portal_id"}, {"prop_id"}}};
constexpr std::array<MemberRule, 1> formatRule{{{"format", Kind::text}}};
constexpr std::array<MemberRule, 2> mediaRules{
    {{"format", Kind::text}, {"asm_journey_id", Kind::filledText, Need::optional}}};

void checkFormat(const Map& body, Problems& problems) {
    const std::string* format = textMember(body, "format");
    if (format != nullptr && *format != "json") {
        problems.add("format is " + inQuotes(*format) + "; expected \"json\"");
    }
}

} // namespace

std::string serverURL(const IncomingRequest& request) {
    const std::string_view host = request.header("Host");
    const bool plain = std::ranges::all_of(host, [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' || c == ':' ||
               c == '-' || c == '[' || c == ']';
    });
    return "http://" + (plain && !host.empty() && host.size() <= 255 ? std::string(host) : "127.0.0.1");
}

std::vector<Route> DeliveryService::routes() const { return {{"POST", deliveryPath}, {"POST", mediaPath}}; }

Answer DeliveryService::answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                               Findings& findings) {
    describeEvent(body, findings);
    checkQuery(request.query, queryRules, findings.problems);
    return path == deliveryPath ? deliver(request, twin, body, findings) : media(request, twin, body, findings);
}

Answer DeliveryService::deliver(const IncomingRequest& request, Twin twin, const Map& body, Findings& findings) {
    checkEvent(request, deliveryPath, twin, body, formatRule, findings.problems);
    checkFormat(body, findings.problems);
    if (!findings.problems.empty()) {
        log_->refused(twin, findings);
        return {};
    }
    std::vector<const Campaign*> due;
    for (const Campaign& campaign : campaigns_->all()) {
        if (campaign.isFor(findings.event, catchAll_)) {
            due.push_back(&campaign);
        }
    }
    const std::uint64_t number = log_->offered(twin, findings, due);
    Map contents;
    for (const Campaign* campaign : due) {
        Map content = campaign->webContent;
        content.set("javascript",
                    filled(campaign->text("javascript"), {serverURL(request), number, campaign->story()}));
        contents.set(campaign->name, std::move(content));
    }
    return {200, {{"webContents", std::move(contents)}}};
}

/// Free in form: a host may send any object. Where it is an event's, it is checked as one.
Answer DeliveryService::media(const IncomingRequest& request, Twin twin, const Map& body, Findings& findings) const {
    if (twin == Twin::sandbox) {
        findings.problems.add("there is no sandbox for " + std::string(mediaPath));
    }
    if (body.contains("en")) {
        // One twin for all portals, so the event is looked at as if it had come to the right one.
        const std::string* portal = textMember(body, "portal_id");
        const bool sandbox = portal != nullptr && *portal == sandboxPortal;
        checkEvent(request, mediaPath, sandbox ? Twin::sandbox : Twin::production, body, mediaRules, findings.problems);
    }
    checkFormat(body, findings.problems);
    const std::string* journey = textMember(body, "asm_journey_id");
    List media;
    for (const Campaign& campaign : campaigns_->all()) {
        if (campaign.media && campaign.isFor(findings.event, catchAll_) &&
            (journey == nullptr || *journey == std::to_string(campaign.story()))) {
            media.emplace_back(Map{{"storyId", campaign.story()}, {"media", *campaign.media}});
        }
    }
    return {200, {{"event", findings.event}, {"contents", std::move(media)}}};
}

} // namespace zentavo::devserver
