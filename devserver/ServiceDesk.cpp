#include "devserver/ServiceDesk.h"

#include <algorithm>
#include <utility>

#include "devserver/Text.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

Answer refusal(int status, const Problems& problems) {
    List list;
    for (std::string& problem : problems.list()) {
        list.emplace_back(std::move(problem));
    }
    const std::string error = problems.count() == 1
                                  ? std::string("this request has a problem")
                                  : "this request has " + std::to_string(problems.count()) + " problems";
    return {status, {{"error", error}, {"problems", std::move(list)}}};
}

LoggedRequest::BodyKind kindOf(const std::string& body, bool isJSON) {
    if (body.empty()) {
        return LoggedRequest::BodyKind::none;
    }
    if (isJSON) {
        return LoggedRequest::BodyKind::json;
    }
    return isUTF8(body) ? LoggedRequest::BodyKind::text : LoggedRequest::BodyKind::bytes;
}

void checkContentType(const IncomingRequest& request, Problems& problems) {
    const std::string_view type = request.header("Content-Type");
    if (type.substr(0, type.find(';')) != "application/json") {
        problems.add(type.empty() ? std::string("header Content-Type is missing; expected application/json")
                                  : "header Content-Type is " + inQuotes(type) + "; expected application/json");
    }
}

} // namespace

ServiceDesk::ServiceDesk(RequestLog& log, FaultPlan& faults, std::vector<std::shared_ptr<Service>> services,
                         Observer observer)
    : log_(log), faults_(faults), observer_(std::move(observer)) {
    for (const auto& service : services) {
        for (const Route& route : service->routes()) {
            entries_.push_back({route, service});
        }
    }
}

void ServiceDesk::handle(IncomingRequest&& request, Connection& connection, httplib::Response& response) {
    LoggedRequest logged;
    logged.time = std::chrono::system_clock::now();
    const ServicePath where = ServicePath::of(request.path);
    logged.twin = where.twin;
    const std::optional<ScriptedFault> fault = faults_.take(where.twin, where.path);
    logged.request = std::move(request);

    Answer answer = judge(logged, response);
    const ScriptedFault* played = fault ? &*fault : nullptr;
    logged.status = FaultPlayer::statusOf(played, answer);
    logged.fault = fault ? fault->description() : "";
    const RequestLog::Shared kept = log_.add(std::move(logged));
    if (observer_) {
        observer_(*kept);
    }
    player_.play(played, std::move(answer), connection, response);
}

Answer ServiceDesk::judge(LoggedRequest& logged, httplib::Response& response) {
    const IncomingRequest& request = logged.request;
    Findings& findings = logged.findings;
    const std::string_view path = ServicePath::of(request.path).path;
    const auto body = json::read(request.body);
    logged.bodyKind = kindOf(request.body, body.ok());

    if (!request.targetReadable) {
        findings.problems.add("the request's target is no path with a query");
        return refusal(400, findings.problems);
    }
    const auto entry = std::ranges::find_if(
        entries_, [&](const Entry& e) { return e.route.matches(path) && e.route.method == request.method; });
    if (entry == entries_.end()) {
        return routeMissed(request, path, findings, response);
    }
    if (request.bodyState == IncomingRequest::Body::tooLarge) {
        findings.problems.add("the body is larger than " + std::to_string(IncomingRequest::maximumBody) + " bytes");
        return refusal(413, findings.problems);
    }
    if (request.bodyState == IncomingRequest::Body::brokenOff) {
        findings.problems.add("the body could not be read to its end");
        return refusal(400, findings.problems);
    }
    checkContentType(request, findings.problems);
    if (!body || body->asMap() == nullptr) {
        findings.problems.add(request.body.empty() ? "the body is empty; expected a JSON object"
                              : body ? std::string("the body is ") + body->kindName() + "; expected a JSON object"
                                     : "the body cannot be read: " + utf8Text(body.error().message));
        return refusal(400, findings.problems);
    }
    Answer answer = entry->service->answer(request, entry->route.path, logged.twin, *body->asMap(), findings);
    return findings.problems.empty() ? answer : refusal(400, findings.problems);
}

Answer ServiceDesk::routeMissed(const IncomingRequest& request, std::string_view path, Findings& findings,
                                httplib::Response& response) const {
    std::string allowed;
    for (const Entry& entry : entries_) {
        if (entry.route.matches(path)) {
            allowed += (allowed.empty() ? "" : ", ") + std::string(entry.route.method);
        }
    }
    if (!allowed.empty()) {
        response.set_header("Allow", allowed);
        findings.problems.add(request.path + " takes " + allowed + ", not " + request.method);
        return refusal(405, findings.problems);
    }
    findings.problems.add("nothing answers at " + inQuotes(request.path));
    Answer answer = refusal(404, findings.problems);
    answer.body.set("available", available());
    return answer;
}

List ServiceDesk::available() const {
    List list;
    for (const Entry& entry : entries_) {
        const char* rest = entry.route.covers == Route::Covers::below ? "…" : "";
        list.emplace_back(std::string(entry.route.method) + " " + std::string(entry.route.path) + rest);
    }
    return list;
}

} // namespace zentavo::devserver
