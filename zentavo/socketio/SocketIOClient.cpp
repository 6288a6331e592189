#include "zentavo/socketio/SocketIOClient.h"

#include <utility>

#include "zentavo/socketio/Namespace.h"

namespace zentavo::socketio {

using Kind = HandlerTable::Kind;

SocketIOClient::SocketIOClient(std::shared_ptr<Namespace> space, std::shared_ptr<SocketManager> manager)
    : space_(std::move(space)), manager_(std::move(manager)) {}

SocketIOClient::~SocketIOClient() { space_->abandon(); }

const std::string& SocketIOClient::name() const noexcept { return space_->name(); }
void SocketIOClient::connect() { space_->connect(); }
void SocketIOClient::disconnect() { space_->disconnect(); }
bool SocketIOClient::connected() const { return space_->connected(); }
std::string SocketIOClient::id() const { return space_->id(); }
bool SocketIOClient::recovered() const { return space_->recovered(); }
void SocketIOClient::setAuth(Auth auth) { space_->setAuth(std::move(auth)); }

HandlerId SocketIOClient::on(std::string_view event, EventHandler handler) {
    return space_->handlers().add(Kind::named, event, std::move(handler), false);
}

HandlerId SocketIOClient::once(std::string_view event, EventHandler handler) {
    return space_->handlers().add(Kind::named, event, std::move(handler), true);
}

HandlerId SocketIOClient::onAny(EventHandler handler) {
    return space_->handlers().add(Kind::anyIncoming, {}, std::move(handler), false);
}

HandlerId SocketIOClient::onAnyOutgoing(EventHandler handler) {
    return space_->handlers().add(Kind::anyOutgoing, {}, std::move(handler), false);
}

HandlerId SocketIOClient::onConnect(std::function<void()> handler) {
    return on("connect", [handler = std::move(handler)](const Event&) { handler(); });
}

HandlerId SocketIOClient::onDisconnect(std::function<void(const Disconnection&)> handler) {
    return on("disconnect", [handler = std::move(handler)](const Event& event) {
        const auto reason = disconnectReason(*event.arguments[0].asString());
        handler({reason.value_or(DisconnectReason::transportClose), *event.arguments[1].asString()});
    });
}

HandlerId SocketIOClient::onConnectError(std::function<void(const ConnectError&)> handler) {
    return on("connect_error", [handler = std::move(handler)](const Event& event) {
        handler({*event.arguments[0].asString(), event.arguments[1], *event.arguments[2].asBool()});
    });
}

void SocketIOClient::off(HandlerId handler) { space_->handlers().remove(handler); }
void SocketIOClient::off(std::string_view event) { space_->handlers().removeNamed(event); }
void SocketIOClient::offAll() { space_->handlers().clear(); }

Emitted SocketIOClient::emit(std::string_view event, Arguments arguments) {
    return space_->emit(event, std::move(arguments), false, nullptr, {});
}

Emitted SocketIOClient::emit(std::string_view event, Arguments arguments, std::chrono::milliseconds timeout,
                             AckHandler handler) {
    return space_->emit(event, std::move(arguments), false, std::move(handler), timeout);
}

Emitted SocketIOClient::emitVolatile(std::string_view event, Arguments arguments) {
    return space_->emit(event, std::move(arguments), true, nullptr, {});
}

} // namespace zentavo::socketio
