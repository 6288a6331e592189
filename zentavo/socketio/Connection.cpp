#include "zentavo/socketio/Connection.h"

#include <utility>

#include "zentavo/foundation/Fault.h"

namespace zentavo::socketio {

Connection::Connection(EngineAddress address, ManagerOptions options, Services services, ManagerHandlers handlers)
    : address_(std::move(address)), options_(std::move(options)), services_(std::move(services)),
      handlers_(std::move(handlers)), budget_(options_.limits.maximumBuffered) {}

template <class Handler, class... Values>
void Connection::tell(const Handler& handler, const Values&... values) {
    if (handler && !abandoned_) {
        entryPoint("Socket.IO manager handler", [&] { handler(values...); });
    }
}

std::vector<std::shared_ptr<Namespace>> Connection::spaces() const {
    std::vector<std::shared_ptr<Namespace>> list;
    for (const auto& [name, space] : spaces_) {
        list.push_back(space);
    }
    return list;
}

void Connection::add(const std::shared_ptr<Namespace>& space) {
    auto& place = spaces_[space->name()];
    if (const auto before = std::exchange(place, space); before && before != space) {
        before->leave(true); // its host let go, and is about to say so; `remove` leaves the new one alone
    }
    if (engine_ && engine_->isOpen()) {
        space->join();
    } else if (!engine_ && timer_ == 0) {
        open();
    }
}

void Connection::remove(const Namespace& space) {
    const auto found = spaces_.find(space.name());
    if (found != spaces_.end() && found->second.get() == &space) {
        spaces_.erase(found);
    }
    if (spaces_.empty()) {
        close();
    }
}

void Connection::disconnectAll() {
    for (const auto& space : spaces()) {
        space->leave(true);
    }
}

void Connection::close() {
    if (timer_ != 0) {
        services_.queue->cancel(std::exchange(timer_, 0));
    }
    attempts_ = 0;
    if (const auto engine = std::exchange(engine_, nullptr)) {
        engine->close();
    }
}

void Connection::open() {
    handshaken_ = false;
    decoder_ = std::make_unique<PacketDecoder>(options_.limits);
    engine_ = std::make_shared<Engine>(address_, options_, services_, cookies_, weak_from_this());
    const auto engine = engine_; // it may end inside the call
    engine->open();
}

void Connection::send(std::vector<EngineFrame> frames) {
    if (const auto engine = engine_) {
        engine->send(std::move(frames));
    }
}

void Connection::onEngineOpen() {
    handshaken_ = true;
    if (const auto attempts = std::exchange(attempts_, 0); attempts > 0) {
        tell(handlers_.onReconnect, attempts);
    }
    for (const auto& space : spaces()) {
        space->join();
    }
}

void Connection::onEngineMessage(std::string_view content, bool binary) {
    auto packet = binary ? decoder_->takeBinary(content) : decoder_->takeText(content);
    if (!packet) {
        if (const auto engine = engine_) {
            engine->close();
        }
        onEngineEnd({DisconnectReason::parseError, packet.error().message});
        return;
    }
    if (!packet->has_value()) {
        return;
    }
    const auto found = spaces_.find((*packet)->space);
    if (found != spaces_.end()) {
        const auto space = found->second;
        space->receive(**std::move(packet));
    } else if ((*packet)->type == PacketType::connect) {
        // Left before the server's answer came; only now can the server be told.
        auto frames = writePacket({PacketType::disconnect, (*packet)->space, {}, {}, {}});
        if (auto held = budget_.take((*packet)->space.size() + 3); frames && held) {
            frames->front().held = std::move(held);
            send(*std::move(frames));
        }
    }
}

void Connection::onEngineEnd(const Disconnection& how) {
    const auto engine = std::exchange(engine_, nullptr);
    const bool handshaken = std::exchange(handshaken_, false);
    const auto message = std::string(text(how.reason)) + (how.detail.empty() ? "" : ": " + how.detail);
    if (!handshaken) {
        tell(handlers_.onError, message);
    }
    for (const auto& space : spaces()) {
        handshaken ? space->lose(how) : space->fail({message, {}, false});
    }
    scheduleAttempt();
}

void Connection::scheduleAttempt() {
    const bool exhausted = options_.reconnectAttempts && attempts_ >= *options_.reconnectAttempts;
    if (!options_.reconnects || exhausted) {
        for (const auto& space : spaces()) {
            space->giveUp();
        }
        spaces_.clear();
        attempts_ = 0;
        if (options_.reconnects) {
            tell(handlers_.onReconnectFailed);
        }
        return;
    }
    if (spaces_.empty() || timer_ != 0) {
        return;
    }
    const auto delay = backoffDelay(options_.backoff, attempts_, *services_.random);
    ++attempts_;
    timer_ = services_.queue->after(delay, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->timer_ = 0;
            self->tell(self->handlers_.onReconnectAttempt, self->attempts_);
            self->open();
        }
    });
}

} // namespace zentavo::socketio
