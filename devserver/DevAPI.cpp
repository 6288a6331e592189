#include "devserver/DevAPI.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

#include "devserver/HTTPFront.h"
#include "devserver/QueryReader.h"
#include "devserver/Text.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

constexpr std::int64_t usualLimit = 1'000;
constexpr std::int64_t mostRequests = 10'000;
constexpr double longestWait = 60; // seconds
constexpr double usualWait = 5;

void answer(httplib::Response& response, int status, const Value& value) {
    const auto text = json::write(value);
    answerJSON(response, text ? status : 500, text ? *text : R"({"error":"the answer cannot be written"})");
}

/// True after answering, when there are problems.
bool refused(httplib::Response& response, const Problems& problems,
             const char* error = "these parameters cannot be understood") {
    if (problems.empty()) {
        return false;
    }
    List list;
    for (std::string& problem : problems.list()) {
        list.emplace_back(std::move(problem));
    }
    answer(response, 400, Map{{"error", error}, {"problems", std::move(list)}});
    return true;
}

/// {"requests": […], "total": …, "dropped": …}
std::string written(const std::vector<RequestLog::Shared>& requests, const RequestLog::Counters& counters) {
    JSONWriter writer;
    writer.beginMap();
    writer.key("requests");
    writer.beginList();
    for (const RequestLog::Shared& request : requests) {
        request->write(writer);
    }
    writer.endList();
    writer.key("total");
    writer.value(static_cast<std::int64_t>(counters.total));
    writer.key("dropped");
    writer.value(static_cast<std::int64_t>(counters.dropped));
    writer.endMap();
    return *writer.finish(); // all that the log keeps is UTF-8
}

/// A browser says which page a request comes from, unless it is a plain visit.
bool comesFromElsewhere(const IncomingRequest& request) {
    const std::string_view origin = request.header("Origin");
    return !origin.empty() && origin != "http://" + std::string(request.header("Host"));
}

} // namespace

const std::vector<DevAPI::Entry>& DevAPI::entries() {
    static const std::vector<Entry> list{
        {"GET", "/_dev/requests", &DevAPI::listRequests},
        {"DELETE", "/_dev/requests", &DevAPI::clearRequests},
        {"GET", "/_dev/request", &DevAPI::showRequest},
        {"GET", "/_dev/body", &DevAPI::showBody},
        {"GET", "/_dev/wait", &DevAPI::wait},
        {"GET", "/_dev/stream", &DevAPI::stream},
        {"GET", "/_dev/status", &DevAPI::status},
        {"GET", "/_dev/fault", &DevAPI::listFaults},
        {"POST", "/_dev/fault", &DevAPI::addFault},
        {"DELETE", "/_dev/fault", &DevAPI::clearFaults},
        {"GET", "/_dev/devices", &DevAPI::listDevices},
        {"GET", "/_dev/inbox", &DevAPI::showInbox},
        {"POST", "/_dev/inbox", &DevAPI::addToInbox},
    };
    return list;
}

DevAPI::DevAPI(RequestLog& log, FaultPlan& faults, const PushRegistrationService& push, InboxService& inbox)
    : log_(log), faults_(faults), push_(push), inbox_(inbox), stream_(log, faults) {}

void DevAPI::handle(const IncomingRequest& request, Connection& connection, httplib::Response& response) {
    if (comesFromElsewhere(request)) {
        answer(response, 403, Map{{"error", "only the server's own page may call this"}});
        return;
    }
    List available;
    std::string allowed;
    for (const Entry& entry : entries()) {
        if (entry.path == request.path && entry.method == request.method) {
            (this->*entry.run)({request, connection, response});
            return;
        }
        available.emplace_back(std::string(entry.method) + " " + std::string(entry.path));
        if (entry.path == request.path) {
            allowed += (allowed.empty() ? "" : ", ") + std::string(entry.method);
        }
    }
    if (!allowed.empty()) {
        response.set_header("Allow", allowed);
        answer(response, 405, Map{{"error", request.path + " takes " + allowed}});
        return;
    }
    answer(response, 404, Map{{"error", "nothing answers at " + inQuotes(request.path)}, {"available", available}});
}

void DevAPI::listRequests(const Call& call) {
    Problems problems;
    QueryReader reader(call.request.query, problems);
    const RequestFilter filter = RequestFilter::from(reader);
    const auto limit = reader.number("limit", 1, mostRequests).value_or(usualLimit);
    reader.finish();
    if (!refused(call.response, problems)) {
        answerJSON(call.response, 200, written(log_.select(filter, static_cast<std::size_t>(limit)), log_.counters()));
    }
}

void DevAPI::clearRequests(const Call& call) {
    log_.clear();
    answer(call.response, 200, Map{{"status", "ok"}});
}

RequestLog::Shared DevAPI::named(const Call& call) {
    Problems problems;
    QueryReader reader(call.request.query, problems);
    const auto number = reader.number("number", 1, std::numeric_limits<std::int64_t>::max());
    reader.finish();
    if (!number && problems.empty()) {
        problems.add("number is missing");
    }
    if (refused(call.response, problems)) {
        return nullptr;
    }
    RequestLog::Shared request = log_.find(static_cast<std::uint64_t>(*number));
    if (!request) {
        answer(call.response, 404, Map{{"error", "no request of that number is kept"}});
    }
    return request;
}

void DevAPI::showRequest(const Call& call) {
    if (const RequestLog::Shared request = named(call)) {
        JSONWriter writer;
        request->write(writer);
        answerJSON(call.response, 200, *writer.finish()); // all that the log keeps is UTF-8
    }
}

void DevAPI::showBody(const Call& call) {
    if (const RequestLog::Shared request = named(call)) {
        // Never as a page: the body may be somebody's script.
        call.response.set_content(request->request.body, "text/plain; charset=utf-8");
        call.response.set_header("X-Content-Type-Options", "nosniff");
        call.response.status = 200;
    }
}

void DevAPI::wait(const Call& call) {
    Problems problems;
    QueryReader reader(call.request.query, problems);
    const RequestFilter filter = RequestFilter::from(reader);
    const auto count = static_cast<std::size_t>(reader.number("count", 1, mostRequests).value_or(1));
    const double seconds = reader.decimal("timeout", 0, longestWait).value_or(usualWait);
    reader.finish();
    if (refused(call.response, problems)) {
        return;
    }
    const auto slot = waiting_.take();
    if (!slot) {
        answer(call.response, 503, Map{{"error", "too many are waiting already"}});
        return;
    }
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1'000));
    const bool came = log_.waitFor(filter, count, deadline);
    const auto requests = log_.select(filter, mostRequests);
    if (came) {
        answerJSON(call.response, 200, written(requests, log_.counters()));
        return;
    }
    answer(call.response, 504,
           Map{{"error", std::to_string(requests.size()) + " of " + std::to_string(count) + " requests came in time"}});
}

void DevAPI::stream(const Call& call) {
    Problems problems;
    QueryReader reader(call.request.query, problems);
    const auto since = reader.number("since", 0, std::numeric_limits<std::int64_t>::max()).value_or(0);
    reader.finish();
    if (!refused(call.response, problems)) {
        stream_.open(static_cast<std::uint64_t>(since), call.connection, call.response);
    }
}

void DevAPI::status(const Call& call) { answerJSON(call.response, 200, stream_.status()); }

void DevAPI::listFaults(const Call& call) { answer(call.response, 200, faults_.list()); }

void DevAPI::addFault(const Call& call) {
    Problems problems;
    ScriptedFault fault = ScriptedFault::from(call.request.query, problems);
    if (refused(call.response, problems)) {
        return;
    }
    const std::string description = fault.description();
    if (!faults_.add(std::move(fault))) {
        answer(call.response, 429, Map{{"error", "the plan is full; DELETE /_dev/fault empties it"}});
        return;
    }
    answer(call.response, 200, Map{{"status", "ok"}, {"fault", description}});
}

void DevAPI::clearFaults(const Call& call) {
    faults_.clear();
    answer(call.response, 200, Map{{"status", "ok"}});
}

void DevAPI::listDevices(const Call& call) { answer(call.response, 200, push_.devices()); }

void DevAPI::showInbox(const Call& call) { answer(call.response, 200, inbox_.everything()); }

void DevAPI::addToInbox(const Call& call) {
    Problems problems;
    std::string id;
    if (const auto message = json::readMap(call.request.body)) {
        id = inbox_.add(*message, problems);
    } else {
        problems.add("the body cannot be read: " + utf8Text(message.error().message));
    }
    if (!refused(call.response, problems, "this message cannot be added")) {
        answer(call.response, 200, Map{{"status", "ok"}, {"item_id", id}});
    }
}

} // namespace zentavo::devserver
