#include "zentavo/socketio/WebSocketTransport.h"

#include <utility>

namespace zentavo::socketio {

namespace {
/// What an idle connection may show for a moment: what was just sent waits for the network's thread.
constexpr std::size_t lowWater = 16'384;
} // namespace

platform::Headers WebSocketTransport::headers() const {
    auto cookies = options_.cookies ? cookies_.header(address_.secure(), services_.clock->steady()) : std::string();
    std::vector<platform::Header> list;
    for (const auto& [name, value] : options_.headers) {
        // One "Cookie" header at most: the host's own cookies come first.
        if (!cookies.empty() && (name == "Cookie" || name == "cookie")) {
            cookies = value + "; " + cookies;
        } else {
            list.emplace_back(name, value);
        }
    }
    if (!cookies.empty()) {
        list.emplace_back("Cookie", std::move(cookies));
    }
    return list;
}

void WebSocketTransport::open(const std::string& sid) {
    const auto guarded = [this](auto then) {
        return [weak = weak_from_this(), then](auto&&... values) {
            const auto self = weak.lock();
            const auto owner = self ? self->owner_.lock() : nullptr;
            if (owner && !self->closed_) {
                then(*self, *owner, values...);
            }
        };
    };
    WebSocketEvents events;
    events.onOpen = guarded([](WebSocketTransport& self, TransportOwner& owner, const auto& headers) {
        self.open_ = true;
        owner.onTransportHeaders(headers);
        owner.onTransportOpen(self);
    });
    events.onMessage = guarded([](WebSocketTransport& self, TransportOwner&, std::string_view content, bool binary) {
        self.onMessage(content, binary);
    });
    events.onDrain = guarded([](WebSocketTransport& self, TransportOwner& owner) {
        self.full_ = false;
        owner.onTransportWritable(self);
    });
    events.onClose = guarded([](WebSocketTransport& self, TransportOwner&, int code, const std::string& reason,
                                int status) { self.onClose(code, reason, status); });
    connection_ = services_.webSockets->open(
        {address_.webSocket(sid), headers(), options_.limits.maximumMessage, options_.connectTimeout},
        std::move(events), services_.queue);
}

void WebSocketTransport::onMessage(std::string_view content, bool binary) {
    EnginePacket packet{EnginePacketType::message, content, true};
    if (!binary) {
        const auto read = readEnginePacket(content);
        if (!read) {
            end(true, read.error().message);
            return;
        }
        packet = *read;
    }
    if (const auto owner = owner_.lock()) {
        owner->onTransportPacket(*this, packet);
    }
}

void WebSocketTransport::onClose(int code, const std::string& reason, int status) {
    std::string detail = "WebSocket";
    if (status != 0) {
        detail += " status " + std::to_string(status);
    } else if (code != 0) {
        detail += " code " + std::to_string(code);
    }
    end(!open_, detail + (reason.empty() ? "" : ": " + reason));
}

void WebSocketTransport::end(bool error, const std::string& detail) {
    const auto self = shared_from_this();
    close();
    if (const auto owner = owner_.lock()) {
        owner->onTransportEnd(*this, error, shortened(detail));
    }
}

bool WebSocketTransport::idle() const { return writable() && connection_->queued() < lowWater; }

void WebSocketTransport::send(std::deque<EngineFrame>& frames) {
    while (!frames.empty()) {
        const auto sent = connection_->send(frames.front().bytes, frames.front().binary);
        if (sent != WebSocketSent::taken) {
            full_ = true; // a closed connection tells so by itself
            return;
        }
        frames.pop_front();
    }
}

void WebSocketTransport::close() {
    closed_ = true;
    open_ = false;
    connection_.reset();
}

} // namespace zentavo::socketio
