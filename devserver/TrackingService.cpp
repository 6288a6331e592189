#include "devserver/TrackingService.h"

#include <cstdint>
#include <limits>

#include "devserver/DeliveryService.h"
#include "devserver/QueryReader.h"

namespace zentavo::devserver {

namespace {

constexpr std::string_view base = "/track/";

/// One transparent point, GIF 89a.
constexpr std::string_view pixel{
    "GIF89a\x01\0\x01\0\x80\0\0\0\0\0\0\0\0!\xF9\x04\x01\0\0\0\0,\0\0\0\0\x01\0\x01\0\0\x02\x02"
    "D\x01\0;",
    43};

} // namespace

std::vector<Route> TrackingService::routes() const {
    return {{"GET", "/track/impression"}, {"GET", "/track/viewable"}, {"GET", "/track/click"}};
}

Answer TrackingService::answer(const IncomingRequest& request, std::string_view path, Twin, const Map&,
                               Findings& findings) {
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
        return {200, {}, std::string(pixel), "image/gif"};
    }
    if (what != "click") {
        return {200, {{"status", "ok"}}};
    }
    const std::string click = "click-" + std::to_string(++clicks_);
    return {200,
            {{"_clk_bc", click},
             {"_clk_url", serverURL(request) + "/landing?utm=in_app_" + campaign->name + "&atm=" + click}}};
}

} // namespace zentavo::devserver
