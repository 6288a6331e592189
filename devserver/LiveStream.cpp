#include "devserver/LiveStream.h"

#include <chrono>
#include <limits>
#include <utility>

#include <unistd.h>

#include "devserver/IncomingRequest.h"
#include "devserver/QueryReader.h"
#include "devserver/Text.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

using websocket::MessageKind;
using websocket::Sent;
using websocket::ServerConnection;
using websocket::ServerRequest;

/// As many as the page keeps.
constexpr std::size_t mostAtFirst = 1'000;
/// Nobody can read faster.
constexpr std::size_t largestBatch = 200;
constexpr std::chrono::milliseconds betweenBatches{100};
/// Summaries in one message; a request may have a very long name.
constexpr std::size_t mostBytes = 512U << 10U;
/// Those that have not said yet what they want, besides the viewers.
constexpr std::size_t mostUndecided = 16;
/// The page has nothing to say.
constexpr std::size_t mostHeard = 4096;

/// The summaries as a JSON list. The oldest are left out and counted in `skipped` when there is too much of them.
std::string summaries(const std::vector<RequestLog::Shared>& requests, std::uint64_t& skipped) {
    std::vector<std::string> newestFirst;
    std::size_t bytes = 0;
    for (auto at = requests.rbegin(); at != requests.rend(); ++at) {
        std::string summary = (*at)->summary();
        bytes += summary.size();
        if (bytes > mostBytes && !newestFirst.empty()) {
            skipped += static_cast<std::uint64_t>(requests.rend() - at);
            break;
        }
        newestFirst.push_back(std::move(summary));
    }
    std::string list = "[";
    for (auto at = newestFirst.rbegin(); at != newestFirst.rend(); ++at) {
        list += (list.size() > 1 ? "," : "") + *at;
    }
    return list + "]";
}

} // namespace

LiveStream::LiveStream(const RequestLog& log, const FaultPlan& faults, const PushLog& pushes)
    : log_(log), faults_(faults), pushes_(pushes), run_(utcTimestamp(std::chrono::system_clock::now())) {
    websocket::ServerHandlers handlers;
    handlers.onRequest = [this](const ServerRequest& request) { return websocket::Verdict{judge(request), {}, {}}; };
    handlers.onOpen = [this](const std::shared_ptr<ServerConnection>& connection) { welcome(connection); };
    handlers.onClose = [this](const std::shared_ptr<ServerConnection>& connection, const websocket::Closed&) {
        std::erase_if(viewers_, [&](const Viewer& viewer) { return viewer.connection == connection; });
    };
    websocket::ServerOptions options;
    options.maximumConnections = maximumViewers + mostUndecided;
    options.limits.maximumMessage = mostHeard;
    options.limits.maximumQueued = maximumQueued;
    server_ = std::make_unique<websocket::WebSocketServer>(std::move(handlers), options, queue_);
}

LiveStream::~LiveStream() {
    server_.reset();
    queue_->stop();
}

bool LiveStream::take(Connection& connection) {
    if (!connection.beginsWith("GET " + std::string(path))) {
        return false;
    }
    const int socket = connection.duplicate();
    if (socket >= 0 && !server_->adopt(socket).ok()) {
        ::close(socket);
    }
    return true;
}

std::optional<std::uint64_t> LiveStream::known(const std::string& target) const {
    IncomingRequest request;
    request.setTarget(target);
    Problems problems;
    QueryReader reader(request.query, problems);
    const auto since = reader.number("since", 0, std::numeric_limits<std::int64_t>::max()).value_or(0);
    // Numbers of another run say nothing about this one.
    const bool mine = reader.text("server").value_or(run_) == run_;
    reader.finish();
    if (request.path != path || !problems.empty()) {
        return std::nullopt;
    }
    return mine ? static_cast<std::uint64_t>(since) : 0;
}

int LiveStream::judge(const ServerRequest& request) const {
    IncomingRequest incoming;
    incoming.headers = request.headers;
    if (incoming.isForeign()) {
        return 403;
    }
    if (!known(request.target)) {
        return 400;
    }
    return viewers_.size() < maximumViewers ? 101 : 503;
}

void LiveStream::welcome(const std::shared_ptr<ServerConnection>& connection) {
    Viewer viewer{connection, log_.end(), {}};
    viewer.position.number = known(connection->request().target).value_or(0);
    if (!tell(viewer, mostAtFirst, status())) {
        return;
    }
    viewers_.push_back(std::move(viewer));
    if (!std::exchange(telling_, true)) {
        queue_->after(betweenBatches, [this] { tellAll(); });
    }
}

void LiveStream::tellAll() {
    const std::string now = status();
    std::erase_if(viewers_, [&](Viewer& viewer) { return !tell(viewer, largestBatch, now); });
    telling_ = !viewers_.empty();
    if (telling_) {
        queue_->after(betweenBatches, [this] { tellAll(); });
    }
}

/// Sends what is new, if anything. False when the viewer has gone, or has to go.
bool LiveStream::tell(Viewer& viewer, std::size_t limit, const std::string& status) const {
    RequestLog::News news = log_.newsSince(viewer.position, limit);
    viewer.position = news.position;
    if (!news.cleared && news.skipped == 0 && news.requests.empty() && viewer.status == status) {
        return true;
    }
    const std::string requests = summaries(news.requests, news.skipped);
    std::string text = R"({"server":")" + run_ + R"(","clearings":)" + std::to_string(news.position.clearings) +
                       R"(,"skipped":)" + std::to_string(news.skipped) + R"(,"requests":)" + requests;
    if (viewer.status != status) {
        text += R"(,"status":)" + status;
        viewer.status = status;
    }
    const Sent sent = viewer.connection->send(MessageKind::text, text + "}");
    if (sent == Sent::full) {
        viewer.connection->close(tooSlow, "requests came faster than they were read");
    }
    return sent == Sent::taken;
}

std::string LiveStream::status() const {
    const RequestLog::Counters counters = log_.counters();
    const auto text = json::write(Map{{"kept", counters.kept},
                                      {"bytes", counters.bytes},
                                      {"total", counters.total},
                                      {"dropped", counters.dropped},
                                      {"with_problems", counters.withProblems},
                                      {"faults", faults_.list()},
                                      {"pushes", pushes_.changes()}});
    return text ? *text : "{}";
}

} // namespace zentavo::devserver
