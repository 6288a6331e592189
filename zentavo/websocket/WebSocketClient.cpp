#include "zentavo/websocket/WebSocketClient.h"

#include <utility>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/websocket/ClientLink.h"
#include "zentavo/websocket/HeaderGrammar.h"
#include "zentavo/websocket/SecureRandom.h"

namespace zentavo::websocket {

struct WebSocketClient::State {
    std::shared_ptr<const ClientHandlers> handlers;
    std::shared_ptr<platform::DispatchQueue> queue;

    mutable Mutex mutex;
    std::shared_ptr<ClientLink> link ZENTAVO_GUARDED_BY(mutex);

    std::shared_ptr<ClientLink> current() const {
        MutexLock lock(mutex);
        return link;
    }
};

WebSocketClient::WebSocketClient(ClientHandlers handlers, std::shared_ptr<platform::DispatchQueue> queue)
    : state_(std::make_unique<State>()) {
    state_->handlers = std::make_shared<const ClientHandlers>(std::move(handlers));
    state_->queue = std::move(queue);
}

WebSocketClient::~WebSocketClient() {
    if (const auto link = state_->current()) {
        link->abandon();
    }
}

Result<void> WebSocketClient::open(std::string_view url, ClientOptions options) {
    auto address = Address::of(url);
    if (!address) {
        return address.error();
    }
    if (options.proxy && (options.proxy->host.empty() || !grammar::isFieldValue(options.proxy->authorization))) {
        return Error{"the proxy's host or authorization cannot be one"};
    }
    auto handshake = ClientHandshake::make(
        {address->authority, address->target, options.subprotocols, options.headers, options.compression},
        *secureRandom());
    if (!handshake) {
        return handshake.error();
    }
    auto link = std::make_shared<ClientLink>(state_->handlers, state_->queue, *std::move(address), std::move(options),
                                             *std::move(handshake));
    {
        MutexLock lock(state_->mutex);
        if (state_->link) {
            return Error{"a client connects once"};
        }
        state_->link = link;
    }
    link->start();
    return {};
}

Sent WebSocketClient::send(MessageKind kind, std::string_view content) {
    const auto link = state_->current();
    return link ? link->sendMessage(kind, content) : Sent::closed;
}

Sent WebSocketClient::ping(std::string_view content) {
    const auto link = state_->current();
    return link ? link->sendPing(content) : Sent::closed;
}

void WebSocketClient::close(CloseCode code, std::string_view reason) {
    if (const auto link = state_->current()) {
        link->sayGoodbye(code, reason);
    }
}

std::size_t WebSocketClient::queued() const {
    const auto link = state_->current();
    return link ? link->waiting() : 0;
}

} // namespace zentavo::websocket
