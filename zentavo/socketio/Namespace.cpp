#include "zentavo/socketio/Namespace.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "zentavo/foundation/Fault.h"
#include "zentavo/socketio/AcknowledgeReceiver.h"
#include "zentavo/socketio/Connection.h"

namespace zentavo::socketio {

namespace {
std::string textIn(const Value& data, std::string_view key) {
    const auto* map = data.asMap();
    const auto* value = map == nullptr ? nullptr : map->find(key);
    const auto* text = value == nullptr ? nullptr : value->asString();
    return text == nullptr ? std::string() : *text;
}
} // namespace

Namespace::Namespace(std::string name, Auth auth, const std::shared_ptr<Connection>& connection)
    : name_(std::move(name)), connection_(connection), queue_(connection->queue()), limits_(connection->limits()),
      early_(limits_), acks_(queue_, abandoned_), auth_(std::move(auth)) {}

template <class Body>
void Namespace::post(Body body) {
    queue_->async([self = shared_from_this(), connection = connection_.lock(), body = std::move(body)]() mutable {
        if (connection) {
            body(*self, *connection);
        }
    });
}

void Namespace::connect() {
    post([](Namespace& self, Connection& connection) {
        if (!self.wanted_ && !self.abandoned_) {
            self.wanted_ = true;
            connection.add(self.shared_from_this());
        }
    });
}

void Namespace::disconnect() {
    post([](Namespace& self, Connection&) { self.leave(true); });
}

void Namespace::abandon() {
    abandoned_ = true;
    handlers_.clear();
    post([](Namespace& self, Connection&) {
        self.leave(true);
        self.buffer_.clear();
        self.acks_.clear();
    });
}

void Namespace::setAuth(Auth auth) {
    MutexLock lock(mutex_);
    std::swap(auth_, auth);
    lock.unlock();
}

bool Namespace::connected() const {
    MutexLock lock(mutex_);
    return snapshot_.connected;
}

bool Namespace::recovered() const {
    MutexLock lock(mutex_);
    return snapshot_.recovered;
}

std::string Namespace::id() const {
    MutexLock lock(mutex_);
    return snapshot_.id;
}

void Namespace::publish(Snapshot snapshot) {
    MutexLock lock(mutex_);
    snapshot_ = std::move(snapshot);
}

Result<std::vector<EngineFrame>> Namespace::framesOf(PacketType type, std::optional<std::uint64_t> id, List data,
                                                     std::vector<std::string> attachments, std::size_t copies) {
    auto frames = writePacket({type, name_, id, std::move(data), std::move(attachments)}, limits_);
    if (!frames) {
        return frames;
    }
    const auto connection = connection_.lock();
    std::size_t bytes = 0;
    for (const auto& frame : *frames) {
        bytes += frame.bytes.size();
    }
    auto held = connection ? connection->budget().take(bytes * copies) : nullptr;
    if (!held) {
        return Error{"too much waits to be sent already"};
    }
    for (auto& frame : *frames) {
        frame.held = held;
    }
    return frames;
}

Result<void> Namespace::emit(std::string_view event, Arguments arguments, bool isVolatile, AckHandler handler,
                             std::chrono::milliseconds timeout) {
    if (isReserved(event)) {
        return Error{"\"" + std::string(event) + "\" is an event of the library's own"};
    }
    auto outgoing = std::make_shared<Outgoing>();
    outgoing->isVolatile = isVolatile;
    if (handler) {
        outgoing->ackId = nextAck_++;
    }
    if (handlers_.hasOutgoing()) {
        outgoing->seen = std::make_shared<const Event>(Event{std::string(event), arguments});
    }
    List data;
    data.reserve(arguments.size() + 1);
    data.emplace_back(event);
    data.insert(data.end(), arguments.values().begin(), arguments.values().end());
    auto frames = framesOf(PacketType::event, outgoing->ackId, std::move(data), arguments.takeAttachments(),
                           outgoing->seen ? 2 : 1);
    if (!frames) {
        return frames.error();
    }
    outgoing->frames = *std::move(frames);
    post([outgoing, handler = std::move(handler), timeout](Namespace& self, Connection&) mutable {
        if (handler) {
            self.await(*outgoing->ackId, std::move(handler), timeout);
        }
        self.send(std::move(*outgoing));
    });
    return {};
}

Result<void> Namespace::acknowledge(std::uint64_t id, std::uint64_t session, Arguments arguments) {
    List data = arguments.values();
    auto frames = framesOf(PacketType::acknowledgement, id, std::move(data), arguments.takeAttachments());
    if (!frames) {
        return frames.error();
    }
    auto shared = std::make_shared<std::vector<EngineFrame>>(*std::move(frames));
    post([shared, session](Namespace& self, Connection& connection) {
        if (self.state_ == State::connected && self.session_ == session) {
            connection.send(std::move(*shared));
        }
    });
    return {};
}

void Namespace::join() {
    rest();
    state_ = State::joining;
    const auto session = session_;
    if (const auto connection = connection_.lock()) {
        joinTimer_ = queue_->after(connection->connectTimeout(), [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->onJoinTimeout();
            }
        });
    }
    MutexLock lock(mutex_);
    const Auth auth = auth_;
    lock.unlock();
    if (!auth.provider) {
        sendConnect(auth.payload);
        return;
    }
    entryPoint("Socket.IO auth provider", [&] {
        auth.provider([weak = weak_from_this(), session](Map payload) {
            if (const auto space = weak.lock()) {
                space->post([session, payload = std::move(payload)](Namespace& self, Connection&) mutable {
                    // One answer for each question; a later one finds nobody who waits.
                    if (self.state_ == State::joining && self.session_ == session) {
                        ++self.session_;
                        self.sendConnect(std::move(payload));
                    }
                });
            }
        });
    });
}

void Namespace::sendConnect(Map payload) {
    if (!recoveryId_.empty()) {
        payload.set("pid", recoveryId_);
        payload.set("offset", recoveryOffset_);
    }
    auto frames =
        writePacket({PacketType::connect, name_, {}, payload.empty() ? Value() : Value(std::move(payload)), {}});
    if (!frames) {
        wanted_ = false;
        fail({"the auth payload: " + frames.error().message, {}, true});
        if (const auto connection = connection_.lock()) {
            connection->remove(*this);
        }
        return;
    }
    if (const auto connection = connection_.lock()) {
        connection->ask(name_, *std::move(frames));
    }
}

void Namespace::onJoinTimeout() {
    joinTimer_ = 0;
    const auto connection = connection_.lock();
    if (state_ != State::joining || !connection) {
        return;
    }
    // Asking a server twice would join twice. Should its answer come after all, the connection leaves for us.
    wanted_ = false;
    fail({"the namespace was not joined in time", {}, true});
    connection->remove(*this);
}

void Namespace::receive(Packet packet) {
    const auto connection = connection_.lock();
    if (packet.type == PacketType::connectError) {
        if (state_ == State::joining) {
            const auto* text = packet.data.asString();
            const auto* map = packet.data.asMap();
            const auto* data = map == nullptr ? nullptr : map->find("data");
            wanted_ = false;
            fail({text != nullptr ? *text : textIn(packet.data, "message"), data == nullptr ? Value() : *data, true});
            connection->remove(*this);
        }
    } else if (packet.type == PacketType::connect) {
        onConnected(packet);
    } else if (state_ == State::joining && packet.type == PacketType::event) {
        early_.keep(std::move(packet));
    } else if (state_ != State::connected) {
        return; // nothing else is expected before the namespace is joined
    } else if (packet.type == PacketType::event) {
        onEvent(std::move(packet));
    } else if (packet.type == PacketType::acknowledgement) {
        onAcknowledgement(std::move(packet));
    } else {
        wanted_ = false;
        lose({DisconnectReason::serverDisconnect, {}});
        connection->remove(*this);
    }
}

void Namespace::onConnected(const Packet& packet) {
    if (state_ != State::joining) {
        return;
    }
    auto id = textIn(packet.data, "sid");
    if (id.empty()) {
        wanted_ = false;
        fail({"the server speaks another version of the protocol", {}, true});
        connection_.lock()->remove(*this);
        return;
    }
    const auto recoveryId = textIn(packet.data, "pid");
    const bool recovered = !recoveryId.empty() && recoveryId == recoveryId_ && early_.complete();
    recoveryId_ = recoveryId;
    state_ = State::connected;
    stopJoinTimer();
    publish({true, recovered, std::move(id)});
    for (auto early = early_.take(); auto& missed : early) {
        onEvent(std::move(missed)); // before "connect", and the host may ask for `recovered` already
    }
    for (auto buffered = std::exchange(buffer_, {}); auto& outgoing : buffered) {
        send(std::move(outgoing));
    }
    if (state_ == State::connected) { // sending may have found the connection dead
        tell({"connect", {}});
    }
}

void Namespace::onEvent(Packet packet) {
    auto& list = *packet.data.asList();
    Event event{std::move(*list.front().asString()),
                Arguments(List(std::make_move_iterator(list.begin() + 1), std::make_move_iterator(list.end())),
                          std::move(packet.attachments))};
    if (packet.id) {
        event.acknowledge =
            Acknowledge(std::make_shared<Acknowledge::Receiver>(weak_from_this(), *packet.id, session_));
    }
    if (!recoveryId_.empty() && !event.arguments.empty()) {
        if (const auto* offset = event.arguments.values().back().asString()) {
            recoveryOffset_ = *offset;
        }
    }
    if (!abandoned_) {
        handlers_.call(HandlerTable::Kind::anyIncoming, event);
    }
    tell(std::move(event));
}

void Namespace::onAcknowledgement(Packet packet) {
    acks_.settle(*packet.id, Arguments(std::move(*packet.data.asList()), std::move(packet.attachments)));
}

void Namespace::tell(Event event) {
    if (!abandoned_) {
        handlers_.call(HandlerTable::Kind::named, event);
    }
}

void Namespace::send(Outgoing outgoing) {
    const auto connection = connection_.lock();
    // Asking may find the connection dead, and then this is not connected any more.
    if (connection && state_ == State::connected && connection->alive() && state_ == State::connected) {
        if (!outgoing.isVolatile || connection->writable()) {
            transmit(std::move(outgoing));
        }
    } else if (!outgoing.isVolatile && !abandoned_) {
        buffer_.push_back(std::move(outgoing));
    }
}

void Namespace::transmit(Outgoing outgoing) {
    if (outgoing.ackId) {
        acks_.sent(*outgoing.ackId);
    }
    connection_.lock()->send(std::move(outgoing.frames));
    if (outgoing.seen && !abandoned_) {
        handlers_.call(HandlerTable::Kind::anyOutgoing, *outgoing.seen);
    }
}

void Namespace::await(std::uint64_t id, AckHandler handler, std::chrono::milliseconds timeout) {
    acks_.add(id, std::move(handler), timeout, [weak = weak_from_this(), id] {
        if (const auto self = weak.lock()) {
            // What is still here must not be sent any more: nobody wants to know.
            std::erase_if(self->buffer_, [&](const Outgoing& outgoing) { return outgoing.ackId == id; });
            self->acks_.settle(id, AckFailure::timedOut);
        }
    });
}

void Namespace::lose(const Disconnection& how) {
    const auto before = state_;
    rest();
    publish({});
    acks_.failSent();
    if (before == State::connected) {
        tell({"disconnect", {text(how.reason), how.detail}});
    } else if (before == State::joining) {
        fail({std::string(text(how.reason)) + (how.detail.empty() ? "" : ": " + how.detail), {}, false});
    }
}

void Namespace::fail(ConnectError error) {
    rest();
    tell({"connect_error", {std::move(error.message), std::move(error.data), error.refused}});
}

void Namespace::leave(bool tellServer) {
    if (!std::exchange(wanted_, false)) {
        return;
    }
    const auto connection = connection_.lock();
    if (state_ == State::connected && connection && tellServer) {
        connection->sayLeft(name_);
    }
    if (state_ == State::connected) {
        lose({DisconnectReason::clientDisconnect, {}});
    }
    rest();
    if (connection) {
        connection->remove(*this);
    }
}

void Namespace::rest() {
    state_ = State::idle;
    ++session_;
    early_.take();
    stopJoinTimer();
}

void Namespace::stopJoinTimer() {
    if (const auto timer = std::exchange(joinTimer_, 0)) {
        queue_->cancel(timer);
    }
}

} // namespace zentavo::socketio
