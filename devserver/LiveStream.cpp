#include "devserver/LiveStream.h"

#include <memory>
#include <utility>

#include "devserver/HTTPFront.h"
#include "devserver/Text.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

using std::chrono::milliseconds;

/// The page can show no more at a time, and nobody can read faster.
constexpr std::size_t largestBatch = 200;
constexpr milliseconds betweenBatches{100};
/// How often a stream with no news looks whether its viewer is there, and whether faults were used up.
constexpr milliseconds look{1'000};

std::string event(std::string_view name, std::string_view data, std::uint64_t id = 0) {
    std::string text = id > 0 ? "id: " + std::to_string(id) + "\n" : "";
    return text.append("event: ").append(name).append("\ndata: ").append(data).append("\n\n");
}

std::string event(std::string_view name, const Map& data) {
    const auto text = json::write(data);
    return event(name, text ? *text : "{}");
}

} // namespace

/// One open stream.
class LiveStream::Viewer {
public:
    Viewer(const LiveStream& stream, std::uint64_t since, std::shared_ptr<void> slot, Connection& connection)
        : stream_(stream), slot_(std::move(slot)), connection_(connection) {
        position_ = stream.log_.end();
        clearings_ = position_.clearings;
        position_.number = since;
    }

    /// Writes what is new, after waiting for it. False when the viewer has gone.
    bool write(httplib::DataSink& sink) {
        if (!greeted_) {
            greeted_ = true;
            const std::string hello = event("hello", Map{{"server", stream_.server_}, {"clearings", clearings_}});
            return sink.write(hello.data(), hello.size());
        }
        const RequestLog::News news =
            stream_.log_.waitForNews(position_, largestBatch, std::chrono::steady_clock::now() + look);
        position_ = news.position;
        std::string text;
        if (news.cleared) {
            text += event("cleared", Map{{"clearings", position_.clearings}});
        }
        if (news.skipped > 0) {
            text += event("skipped", Map{{"count", news.skipped}});
        }
        for (const RequestLog::Shared& request : news.requests) {
            text += event("request", request->summary(), request->number);
        }
        // Comes at least with every look, which also shows when the connection is dead.
        text += event("status", stream_.status());
        return sink.write(text.data(), text.size()) && connection_.waitWhileOpen(betweenBatches);
    }

private:
    const LiveStream& stream_;
    const std::shared_ptr<void> slot_;
    Connection& connection_;
    RequestLog::Position position_;
    std::uint64_t clearings_ = 0;
    bool greeted_ = false;
};

LiveStream::LiveStream(const RequestLog& log, const FaultPlan& faults)
    : log_(log), faults_(faults), server_(utcTimestamp(std::chrono::system_clock::now())) {}

void LiveStream::open(std::uint64_t since, Connection& connection, httplib::Response& response) {
    auto slot = viewers_.take();
    if (!slot) {
        answerJSON(response, 503, R"({"error":"too many viewers"})");
        return;
    }
    connection.closeAfterAnswer();
    response.status = 200;
    response.set_header("Cache-Control", "no-store");
    const auto viewer = std::make_shared<Viewer>(*this, since, std::move(slot), connection);
    response.set_chunked_content_provider(
        "text/event-stream", [viewer](std::size_t, httplib::DataSink& sink) { return viewer->write(sink); });
}

std::string LiveStream::status() const {
    const RequestLog::Counters counters = log_.counters();
    const auto text = json::write(Map{{"kept", counters.kept},
                                      {"bytes", counters.bytes},
                                      {"total", counters.total},
                                      {"dropped", counters.dropped},
                                      {"with_problems", counters.withProblems},
                                      {"faults", faults_.list()}});
    return text ? *text : "{}";
}

} // namespace zentavo::devserver
