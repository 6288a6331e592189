#include "zentavo/websocket/ServerLink.h"

#include <utility>

#include <asio/post.hpp>

#include "zentavo/foundation/Fault.h"
#include "zentavo/websocket/PlainStream.h"
#include "zentavo/websocket/SecureStream.h"

namespace zentavo::websocket {

ServerLink::ServerLink(std::shared_ptr<const ServerHost> host, std::shared_ptr<platform::DispatchQueue> queue,
                       const ServerOptions& options, std::function<void(const std::shared_ptr<ServerLink>&)> ended)
    : Link(Role::server, options, queue), host_(std::move(host)), queue_(std::move(queue)), ended_(std::move(ended)),
      handshake_(options.compression) {}

void ServerLink::start(asio::ip::tcp::socket socket, const TLSContext* tls) {
    turn([&] {
        arm(Wait::handshake, options_.handshakeTimeout);
        if (tls == nullptr) {
            attach(std::make_unique<PlainStream>(std::move(socket)));
            read();
            return;
        }
        auto stream = std::make_unique<SecureStream>(std::move(socket), std::make_unique<TLSEngine>(*tls));
        stream->handshake([link = shared_from_this()](const asio::error_code& error) {
            link->turn([&] { error ? link->fail("TLS: " + error.message(), CloseCode::tlsFailure) : link->read(); });
        });
        attach(std::move(stream));
    });
}

void ServerLink::takeHandshake(std::span<char>& input) {
    if (asked_) {
        // A client that sends frames before our answer cannot know whether we speak WebSocket.
        fail("the client did not wait for the answer");
        return;
    }
    switch (handshake_.receive(input)) {
    case ServerHandshake::Step::needMore:
        return;
    case ServerHandshake::Step::refused:
        refuse(handshake_.answer());
        return;
    case ServerHandshake::Step::request:
        break;
    }
    asked_ = true;
    if (!queue_ || !host_->handlers.onRequest) {
        answer(ask());
        return;
    }
    if (!input.empty()) {
        fail("the client did not wait for the answer");
        return;
    }
    queue_->async([link = shared_from_this()] {
        const Verdict verdict = link->ask();
        asio::post(IOThread::shared().context(), [link, verdict] {
            link->turn([&] {
                if (!link->dead()) {
                    link->answer(verdict);
                }
            });
        });
    });
}

Verdict ServerLink::ask() const {
    if (!host_->handlers.onRequest) {
        return {};
    }
    Verdict broken;
    broken.status = 503;
    if (host_->gone.load()) {
        return broken;
    }
    return entryPoint(
        "WebSocket handler", [&] { return host_->handlers.onRequest(handshake_.request()); }, broken);
}

void ServerLink::answer(const Verdict& verdict) {
    if (verdict.status != 101) {
        refuse(ServerHandshake::refuse(verdict.status, verdict.headers));
        return;
    }
    std::string first = handshake_.accept(verdict.subprotocol, verdict.headers);
    begin(handshake_.result(), std::move(first));
}

template <class Handler, class... Arguments>
void ServerLink::call(const Handler& handler, Arguments&&... arguments) {
    if (handler && !host_->gone.load()) {
        handler(shared_from_this(), std::forward<Arguments>(arguments)...);
    }
}

void ServerLink::deliverOpen() { call(host_->handlers.onOpen); }
void ServerLink::deliverMessage(MessageKind kind, std::string_view content) {
    call(host_->handlers.onMessage, kind, content);
}
void ServerLink::deliverDrain() { call(host_->handlers.onDrain); }
void ServerLink::deliverClose() {
    if (isOpen()) {
        call(host_->handlers.onClose, closed());
    }
}

} // namespace zentavo::websocket
