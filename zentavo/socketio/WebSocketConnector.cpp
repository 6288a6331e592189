#include "zentavo/socketio/WebSocketConnector.h"

#include <utility>

#include "zentavo/websocket/WebSocketClient.h"

namespace zentavo::socketio {

namespace {

namespace ws = websocket;

class ClientConnection final : public WebSocketConnection {
public:
    ClientConnection(ws::ClientHandlers handlers, std::shared_ptr<platform::DispatchQueue> queue)
        : client_(std::move(handlers), std::move(queue)) {}

    Result<void> open(const WebSocketRequest& request) {
        ws::ClientOptions options;
        options.limits.maximumMessage = request.maximumMessage;
        options.connectTimeout = request.timeout;
        options.handshakeTimeout = request.timeout;
        options.pingInterval = std::chrono::milliseconds(0); // the server's pings, one layer up, keep the connection
        for (const auto& [name, value] : request.headers) {
            options.headers.emplace_back(name, value);
        }
        return client_.open(request.url, std::move(options));
    }

    WebSocketSent send(std::string_view content, bool binary) override {
        switch (client_.send(binary ? ws::MessageKind::binary : ws::MessageKind::text, content)) {
        case ws::Sent::taken:
            return WebSocketSent::taken;
        case ws::Sent::full:
            return WebSocketSent::full;
        case ws::Sent::closed:
            break;
        }
        return WebSocketSent::closed;
    }

    std::size_t queued() const override { return client_.queued(); }

private:
    ws::WebSocketClient client_;
};

class ClientConnector final : public WebSocketConnector {
public:
    std::unique_ptr<WebSocketConnection> open(const WebSocketRequest& request, WebSocketEvents events,
                                              std::shared_ptr<platform::DispatchQueue> queue) override {
        const auto shared = std::make_shared<const WebSocketEvents>(std::move(events));
        ws::ClientHandlers handlers;
        handlers.onOpen = [shared](const ws::Handshake& agreed) {
            shared->onOpen({agreed.headers.begin(), agreed.headers.end()});
        };
        handlers.onMessage = [shared](ws::MessageKind kind, std::string_view content) {
            shared->onMessage(content, kind == ws::MessageKind::binary);
        };
        handlers.onDrain = [shared] { shared->onDrain(); };
        handlers.onClose = [shared](const ws::Closed& closed, int status) {
            shared->onClose(static_cast<int>(closed.code), closed.reason, status);
        };
        auto connection = std::make_unique<ClientConnection>(std::move(handlers), queue);
        if (const auto opened = connection->open(request); !opened) {
            queue->async([shared, why = opened.error().message] { shared->onClose(0, why, 0); });
        }
        return connection;
    }
};

} // namespace

std::shared_ptr<WebSocketConnector> defaultWebSocketConnector() {
    static const auto connector = std::make_shared<ClientConnector>();
    return connector;
}

} // namespace zentavo::socketio
