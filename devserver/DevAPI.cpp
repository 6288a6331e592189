#include "devserver/DevAPI.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

#include "devserver/HTTPFront.h"
#include "devserver/QueryReader.h"
#include "devserver/TemplateHostService.h"
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

} // namespace

const std::vector<DevAPI::Entry>& DevAPI::entries() {
    static const std::vector<Entry> list{
        {"GET", "/_dev/requests", &DevAPI::listRequests},
        {"DELETE", "/_dev/requests", &DevAPI::clearRequests},
        {"GET", "/_dev/request", &DevAPI::showRequest},
        {"GET", "/_dev/body", &DevAPI::showBody},
        {"GET", "/_dev/wait", &DevAPI::wait},
        {"GET", LiveStream::path, &DevAPI::pointToStream},
        {"GET", "/_dev/status", &DevAPI::status},
        {"GET", "/_dev/fault", &DevAPI::listFaults},
        {"POST", "/_dev/fault", &DevAPI::addFault},
        {"DELETE", "/_dev/fault", &DevAPI::clearFaults},
        {"GET", "/_dev/devices", &DevAPI::listDevices},
        {"GET", "/_dev/push", &DevAPI::listPushFiles},
        {"POST", "/_dev/push", &DevAPI::sendPush},
        {"GET", "/_dev/pushes", &DevAPI::listPushes},
        {"DELETE", "/_dev/pushes", &DevAPI::clearPushes},
        {"GET", "/_dev/push/registrations", &DevAPI::listRegistrations},
        {"POST", "/_dev/push/registrations", &DevAPI::renewRegistration},
        {"DELETE", "/_dev/push/registrations", &DevAPI::dropRegistration},
        {"GET", "/_dev/inbox", &DevAPI::showInbox},
        {"POST", "/_dev/inbox", &DevAPI::addToInbox},
        {"GET", "/_dev/deliveries", &DevAPI::listDeliveries},
        {"DELETE", "/_dev/deliveries", &DevAPI::clearDeliveries},
        {"POST", "/_dev/trace", &DevAPI::takeTrace},
        {"GET", "/_dev/campaigns", &DevAPI::listCampaigns},
        {"POST", "/_dev/campaigns", &DevAPI::switchCampaigns},
        {"GET", "/_dev/preview", &DevAPI::preview},
    };
    return list;
}

DevAPI::DevAPI(const Parts& parts)
    : log_(parts.log), faults_(parts.faults), push_(parts.push), sender_(parts.sender), endpoints_(parts.endpoints),
      pushes_(parts.pushes), inbox_(parts.inbox), campaigns_(parts.campaigns), deliveries_(parts.deliveries),
      delivery_(parts.delivery), stream_(parts.stream) {}

void DevAPI::handle(const IncomingRequest& request, Connection& connection, httplib::Response& response) {
    if (request.isForeign()) {
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

/// The stream itself is opened by a connection's first request and never gets here.
void DevAPI::pointToStream(const Call& call) {
    call.response.set_header("Upgrade", "websocket");
    answer(call.response, 426, Map{{"error", "this is a WebSocket, on a connection of its own"}});
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

void DevAPI::listPushFiles(const Call& call) {
    List files;
    for (const PushFiles::File& file : sender_.files().all()) {
        files.emplace_back(Map{{"name", file.name}, {"text", utf8Text(file.text)}});
    }
    answer(call.response, 200, Map{{"files", std::move(files)}});
}

void DevAPI::sendPush(const Call& call) {
    const auto slot = waiting_.take();
    if (!slot) {
        answer(call.response, 503, Map{{"error", "too many are waiting already"}});
        return;
    }
    Problems problems;
    Map sent;
    if (const auto order = json::readMap(call.request.body)) {
        sent = sender_.send(*order, serverURL(call.request), problems);
    } else {
        problems.add("the body cannot be read: " + utf8Text(order.error().message));
    }
    if (!refused(call.response, problems, "this push cannot be sent")) {
        answer(call.response, 200, sent);
    }
}

void DevAPI::listPushes(const Call& call) { answer(call.response, 200, Map{{"pushes", pushes_.list()}}); }

void DevAPI::clearPushes(const Call& call) {
    pushes_.clear();
    answer(call.response, 200, Map{{"status", "ok"}});
}

void DevAPI::listRegistrations(const Call& call) { answer(call.response, 200, endpoints_.map()); }
void DevAPI::renewRegistration(const Call& call) { changeRegistration(call, &PushEndpoints::renew); }
void DevAPI::dropRegistration(const Call& call) { changeRegistration(call, &PushEndpoints::drop); }

void DevAPI::changeRegistration(const Call& call, bool (PushEndpoints::*change)(std::string_view)) {
    Problems problems;
    QueryReader reader(call.request.query, problems);
    const auto token = reader.text("token");
    reader.finish();
    if (!token && problems.empty()) {
        problems.add("token is missing");
    }
    if (refused(call.response, problems)) {
        return;
    }
    if (!(endpoints_.*change)(*token)) {
        answer(call.response, 404, Map{{"error", "no app has registered with the token " + inQuotes(*token)}});
        return;
    }
    answer(call.response, 200, Map{{"status", "ok"}});
}

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

void DevAPI::listDeliveries(const Call& call) {
    answer(call.response, 200, Map{{"deliveries", deliveries_.list()}, {"catch_all", delivery_.catchAll()}});
}

void DevAPI::clearDeliveries(const Call& call) {
    deliveries_.clear();
    answer(call.response, 200, Map{{"status", "ok"}});
}

/// An app's own word on a delivery.
void DevAPI::takeTrace(const Call& call) {
    Problems problems;
    std::optional<TraceReport> report;
    if (call.request.body.size() > TraceReport::maximumBytes) {
        problems.add("the body has " + std::to_string(call.request.body.size()) + " bytes; a trace has at most " +
                     std::to_string(TraceReport::maximumBytes));
    } else if (const auto record = json::readMap(call.request.body)) {
        report = TraceReport::from(*record, problems);
    } else {
        problems.add("the body cannot be read: " + utf8Text(record.error().message));
    }
    if (refused(call.response, problems, "this is no trace of a delivery")) {
        return;
    }
    if (const std::uint64_t delivery = deliveries_.traced(*report); delivery != 0) {
        answer(call.response, 200, Map{{"status", "ok"}, {"delivery", static_cast<std::int64_t>(delivery)}});
    } else {
        answer(call.response, 404, Map{{"error", "no delivery that is kept fits this trace"}});
    }
}

void DevAPI::listCampaigns(const Call& call) {
    List list;
    for (const Campaign& campaign : campaigns_.all()) {
        list.emplace_back(Map{{"name", campaign.name},
                              {"description", campaign.description},
                              {"events", List(campaign.events.begin(), campaign.events.end())},
                              {"template", campaign.text("template")},
                              {"design_mode", campaign.text("designMode")},
                              {"story_id", campaign.story()}});
    }
    answer(call.response, 200, Map{{"campaigns", std::move(list)}, {"catch_all", delivery_.catchAll()}});
}

void DevAPI::switchCampaigns(const Call& call) {
    Problems problems;
    QueryReader reader(call.request.query, problems);
    const bool on = reader.flag("catch_all");
    reader.finish();
    if (call.request.query.empty()) {
        problems.add("catch_all is missing");
    }
    if (!refused(call.response, problems)) {
        delivery_.setCatchAll(on);
        answer(call.response, 200, Map{{"status", "ok"}, {"catch_all", on}});
    }
}

/// A campaign as a page of its own, in a browser without an app around it.
void DevAPI::preview(const Call& call) {
    Problems problems;
    QueryReader reader(call.request.query, problems);
    const std::string name = reader.text("campaign").value_or("");
    reader.finish();
    if (refused(call.response, problems)) {
        return;
    }
    const auto campaign = std::ranges::find(campaigns_.all(), name, &Campaign::name);
    if (campaign == campaigns_.all().end()) {
        answer(call.response, 404, Map{{"error", "there is no campaign " + inQuotes(name)}});
        return;
    }
    const Tracking tracking{serverURL(call.request), 0, campaign->story()};
    std::string page = campaign->html ? *campaign->html : std::string(TemplateHostService::page());
    std::string script = campaign->text("javascript");
    // Inside a page no script may hold what ends one.
    for (std::size_t at = script.find("</"); at != std::string::npos; at = script.find("</", at + 3)) {
        script.replace(at, 2, "<\\/");
    }
    page += "\n<script>\n" + script + "\n</script>\n";
    answerContent(call.response, 200, filled(page, tracking), "text/html; charset=utf-8");
}

} // namespace zentavo::devserver
