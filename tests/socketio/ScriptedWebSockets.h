#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zentavo/socketio/WebSocketConnector.h"

namespace zentavo::socketio::test {

/// WebSocket connections without a network: the test plays the server.
class ScriptedWebSockets final : public WebSocketConnector {
public:
    struct Connection {
        WebSocketRequest request;
        WebSocketEvents events;
        std::vector<std::string> sent; ///< binary ones behind "b:"
        bool full = false;
        std::size_t queued = 0;
        bool released = false;

        void open(const std::vector<platform::Header>& headers = {}) const { events.onOpen(headers); }
        void say(std::string_view text) const { events.onMessage(text, false); }
        void sayBinary(std::string_view bytes) const { events.onMessage(bytes, true); }
        void close(int code, const std::string& reason = {}, int status = 0) const {
            events.onClose(code, reason, status);
        }
        void drain() {
            full = false;
            events.onDrain();
        }
        std::vector<std::string> takeSent() { return std::exchange(sent, {}); }
    };

    std::vector<std::shared_ptr<Connection>> connections;
    Connection& last() const { return *connections.back(); }

    std::unique_ptr<WebSocketConnection> open(const WebSocketRequest& request, WebSocketEvents events,
                                              std::shared_ptr<platform::DispatchQueue>) override {
        connections.push_back(
            std::make_shared<Connection>(Connection{request, std::move(events), {}, false, 0, false}));
        return std::make_unique<Handle>(connections.back());
    }

private:
    struct Handle final : WebSocketConnection {
        explicit Handle(std::shared_ptr<Connection> mine) : connection(std::move(mine)) {}
        ~Handle() override { connection->released = true; }
        WebSocketSent send(std::string_view content, bool binary) override {
            if (connection->full) {
                return WebSocketSent::full;
            }
            connection->sent.push_back((binary ? "b:" : "") + std::string(content));
            return WebSocketSent::taken;
        }
        std::size_t queued() const override { return connection->queued; }
        const std::shared_ptr<Connection> connection;
    };
};

} // namespace zentavo::socketio::test
