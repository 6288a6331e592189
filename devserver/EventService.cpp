#include "devserver/EventService.h"

#include <array>

#include "devserver/EventCheck.h"

namespace zentavo::devserver {

namespace {

constexpr std::array<QueryRule, 3> queryRules{{{"resp_type", "json"}, {"portal_id"}, {"prop_id"}}};

} // namespace

std::vector<Route> EventService::routes() const { return {{"POST", "/event"}}; }

Answer EventService::answer(const IncomingRequest& request, std::string_view, Twin twin, const Map& body,
                            Findings& findings) {
    describeEvent(body, findings);
    checkQuery(request.query, queryRules, findings.problems);
    checkEvent(request, "/event", twin, body, {}, findings.problems);

    const Map* properties = mapMember(body, "extra");
    if (findings.event == "submit_rating" && properties != nullptr && findings.problems.empty()) {
        pushes_->rated(*properties);
    }
    Answer answer{200, {{"status", "ok"}}};
    if (!sessionId_.empty()) {
        answer.body.set("session_id", sessionId_);
    }
    return answer;
}

} // namespace zentavo::devserver
