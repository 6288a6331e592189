#include "devserver/TrackingService.h"

#include <cstdint>
#include <limits>

#include "devserver/BodyChecks.h"
#include "devserver/DeliveryService.h"
#include "devserver/QueryReader.h"
#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

constexpr std::string_view base = "/track/";
constexpr std::string_view clickPath = "/track/click";

/// One transparent point, GIF 89a.
constexpr std::string_view pixel{
    "GIF89a\x01\0\x01\0\x80\0\0\0\0\0\0\0\0!\xF9\x04\x01\0\0\0\0,\0\0\0\0\x01\0\x01\0\0\x02\x02"
    "D\x01\0;",
    43};

Answer pixelAnswer() { return {200, {}, std::string(pixel), "image/gif"}; }

} // namespace

std::vector<Route> TrackingService::routes() const {
    return {{"GET", "/track/impression"}, {"GET", "/track/viewable"}, {"GET", "/track/click"}};
}

Answer TrackingService::answer(const IncomingRequest& request, std::string_view path, Twin, const Map&,
                               Findings& findings) {
    if (path == clickPath && queryValue(request.query, "push") != nullptr) {
        return pushClick(request, findings);
    }
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    Problems& problems = findings.problems;
    QueryReader reader(request.query, problems);
    const auto story = reader.number("story", 1, most);
    const auto delivery = reader.number("delivery", 0, most);
    const auto kind = reader.word("resp_type", {"pixel", "json"});
    reader.finish();
    if (problems.empty() && (!story || !kind)) {
        problems.add(!story ? "story is missing" : "resp_type is missing");
    }
    const Campaign* campaign = story ? campaigns_->find(*story) : nullptr;
    if (story && campaign == nullptr) {
        problems.add("there is no story " + std::to_string(*story));
    }
    if (!problems.empty()) {
        return {};
    }
    const std::string_view what = path.substr(base.size());
    findings.event = std::string(what) + " of " + campaign->name;
    log_->tracked(static_cast<std::uint64_t>(delivery.value_or(0)), *story, what);
    if (*kind == "pixel") {
        return pixelAnswer();
    }
    if (what != "click") {
        return {200, {{"status", "ok"}}};
    }
    const std::string click = "click-" + std::to_string(++clicks_);
    return {200,
            {{"_clk_bc", click},
             {"_clk_url", serverURL(request) + "/landing?utm=in_app_" + campaign->name + "&atm=" + click}}};
}

/// An app asks for the URL just as the push has it.
Answer TrackingService::pushClick(const IncomingRequest& request, Findings& findings) {
    QueryReader reader(request.query, findings.problems);
    const std::string id = reader.text("push").value_or("");
    reader.finish();
    findings.event = "click of push " + id;
    if (findings.problems.empty() && !pushes_->clicked(id)) {
        findings.problems.add("no push " + inQuotes(id) + " was sent lately");
    }
    return pixelAnswer();
}

} // namespace zentavo::devserver
