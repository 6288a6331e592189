#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/Connection.h"
#include "devserver/FaultPlan.h"
#include "devserver/PushLog.h"
#include "devserver/RequestLog.h"
#include "devserver/SerialQueue.h"
#include "zentavo/websocket/WebSocketServer.h"

namespace zentavo::devserver {

/// Tells the live page what happens, over a WebSocket at the server's own port. Each message is one JSON object:
///   server, clearings  which run of the server this is, and how often its log was emptied: when one of them changes,
///                      what came before is no more
///   skipped            requests that are not told: they came too fast, or were too many
///   requests           summaries of logged requests, the oldest first
///   status             {"kept", "total", "dropped", "with_problems", "faults", "pushes"}, when it has changed;
///                      the last is another number whenever something was heard of a push
/// A viewer is nothing but a place in the log and a bounded queue. One that reads too slowly for that is sent away with
/// `tooSlow`, and may come again.
class LiveStream {
public:
    static constexpr std::string_view path = "/_dev/stream";
    static constexpr std::size_t maximumViewers = 64;
    /// Bytes that wait for one viewer.
    static constexpr std::size_t maximumQueued = 2U << 20U;
    static constexpr auto tooSlow = static_cast<websocket::CloseCode>(4000);

    LiveStream(const RequestLog& log, const FaultPlan& faults, const PushLog& pushes);
    ~LiveStream();
    LiveStream(const LiveStream&) = delete;
    LiveStream& operator=(const LiveStream&) = delete;

    /// Waits for the first request of a new connection, and takes the connection over when that is for the stream.
    bool take(Connection& connection);
    /// The counters and faults, as in a message.
    std::string status() const;

private:
    struct Viewer {
        std::shared_ptr<websocket::ServerConnection> connection;
        RequestLog::Position position;
        /// What was told of it last.
        std::string status;
    };

    // On the queue.
    /// The status of the answer; 101 lets the viewer in.
    int judge(const websocket::ServerRequest& request) const;
    void welcome(const std::shared_ptr<websocket::ServerConnection>& connection);
    void tellAll();
    bool tell(Viewer& viewer, std::size_t limit, const std::string& status) const;
    /// The number of the last request that the viewer knows; none when it asks for what there is not.
    std::optional<std::uint64_t> known(const std::string& target) const;

    const RequestLog& log_;
    const FaultPlan& faults_;
    const PushLog& pushes_;
    /// Tells one run of the server from another.
    const std::string run_;
    const std::shared_ptr<SerialQueue> queue_ = std::make_shared<SerialQueue>();
    /// The queue's.
    std::vector<Viewer> viewers_;
    bool telling_ = false;
    std::unique_ptr<websocket::WebSocketServer> server_;
};

} // namespace zentavo::devserver
