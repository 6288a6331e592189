#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/websocket/ConnectionOptions.h"
#include "zentavo/websocket/Handshake.h"

namespace zentavo::websocket {

/// An HTTP proxy, asked by CONNECT for ws and wss alike.
struct Proxy {
    std::string host;
    std::uint16_t port = 0;
    /// The value of "Proxy-Authorization"; empty for none.
    std::string authorization;
};

struct ClientOptions : ConnectionOptions {
    /// Looking up the host, the TCP connection, the proxy and TLS, all together.
    std::chrono::milliseconds connectTimeout{15'000};
    /// In order of preference.
    std::vector<std::string> subprotocols;
    HeaderFields headers;
    std::optional<Proxy> proxy;
    /// A PEM file with the authorities to trust instead of the system's.
    std::string certificateAuthorities;
    /// Certificate and host name of a wss server. Turned off for tests only.
    bool verifyCertificate = true;
};

/// Called on the queue that the client was given, one at a time. Any may be empty. Views hold during the call.
struct ClientHandlers {
    std::function<void(const Handshake&)> onOpen;
    std::function<void(MessageKind, std::string_view)> onMessage;
    /// After a `send` that found the queue full: there is room again.
    std::function<void()> onDrain;
    /// The last call, exactly once for each client that was opened, also when the connection never came about. `status`
    /// is that of an HTTP answer which refused it, else 0.
    std::function<void(const Closed&, int status)> onClose;
};

/// A WebSocket connection to a ws or wss URL, for one time: to connect again, make another. Any thread.
///
/// Destroying it never waits and is allowed at any time, also inside its own handlers: the goodbye is said in the
/// background, and no handler starts any more. (A handler that another thread has started may be still running.)
/// Handlers that throw are faults of the host.
class ZENTAVO_EXPORT WebSocketClient {
public:
    /// `queue` is serial and runs the handlers. Without one they run on the library's I/O thread, which they must not
    /// block: the fastest way, for hosts that only pass messages on.
    explicit WebSocketClient(ClientHandlers handlers, std::shared_ptr<platform::DispatchQueue> queue = nullptr);
    ~WebSocketClient();
    WebSocketClient(const WebSocketClient&) = delete;
    WebSocketClient& operator=(const WebSocketClient&) = delete;

    /// Starts to connect; at most once. An error, and then no handler call, for what is no ws or wss URL or cannot be
    /// asked for.
    Result<void> open(std::string_view url, ClientOptions options = {});

    /// Text must be UTF-8. Before `onOpen` and after `close` the answer is `closed`.
    Sent send(MessageKind kind, std::string_view content);
    Sent sendText(std::string_view content) { return send(MessageKind::text, content); }
    Sent sendBinary(std::string_view content) { return send(MessageKind::binary, content); }
    Sent ping(std::string_view content = {});
    /// Says goodbye after what was sent before; `onClose` follows within the close timeout. A connection that is not
    /// open yet is given up.
    void close(CloseCode code = CloseCode::normal, std::string_view reason = {});
    /// Bytes that wait to leave for the network, with the heads of their frames; any thread. Right after a `send` they
    /// wait for the I/O thread's turn, so an idle connection shows them too for a moment.
    std::size_t queued() const;

private:
    struct State;
    const std::unique_ptr<State> state_;
};

} // namespace zentavo::websocket
