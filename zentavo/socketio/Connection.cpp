#include "zentavo/socketio/Connection.h"

#include <utility>

#include "zentavo/foundation/Fault.h"

namespace zentavo::socketio {

namespace {
/// Between leaving a namespace and joining it again. A server looks at everything that one read brings before it lets go
/// of what was left in it, and takes a join among that for a second one: it ends the connection.
constexpr std::chrono::milliseconds apart{100};
/// A connection that is busy all the time is never seen idle; by then the leave has left all the same.
constexpr int mostPauses = 20;
} // namespace

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
    if (const auto question = asked_.find(space.name()); question != asked_.end()) {
        question->second.stale = true;
        question->second.next.clear();
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
    forgetQuestions();
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

void Connection::ask(const std::string& name, std::vector<EngineFrame> frames) {
    const auto [question, isFirst] = asked_.try_emplace(name);
    if (isFirst) {
        send(std::move(frames));
    } else {
        question->second.next = std::move(frames); // a server ends connections that ask twice at once
    }
}

void Connection::sayLeft(const std::string& name) {
    if (auto frames = writePacket({PacketType::disconnect, name, {}, {}, {}})) {
        send(*std::move(frames));
    }
    asked_[name].stale = true;
    pauseBeforeNext(name);
}

void Connection::pauseBeforeNext(const std::string& name) {
    auto& question = asked_[name];
    const bool last = ++question.pauses == mostPauses;
    question.pause = services_.queue->after(apart, [weak = weak_from_this(), name, last] {
        if (const auto self = weak.lock()) {
            (last || self->writable()) ? self->askNext(name) : self->pauseBeforeNext(name);
        }
    });
}

void Connection::askNext(const std::string& name) {
    if (auto question = asked_.extract(name); !question.mapped().next.empty()) {
        ask(name, std::move(question.mapped().next));
    }
}

bool Connection::answers(const Packet& packet) {
    const auto question = asked_.find(packet.space);
    if (question == asked_.end() || question->second.pause != 0) {
        return false; // nobody asked
    }
    if (!question->second.stale) {
        asked_.erase(question);
        return true;
    }
    // Left before the server's answer came; only now can the server be told.
    packet.type == PacketType::connect ? sayLeft(packet.space) : askNext(packet.space);
    return false;
}

void Connection::forgetQuestions() {
    for (const auto& [name, question] : asked_) {
        services_.queue->cancel(question.pause);
    }
    asked_.clear();
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
    const auto type = (*packet)->type;
    if ((type == PacketType::connect || type == PacketType::connectError) && !answers(**packet)) {
        return;
    }
    const auto found = spaces_.find((*packet)->space);
    if (found != spaces_.end()) {
        const auto space = found->second;
        space->receive(**std::move(packet));
    }
}

void Connection::onEngineEnd(const Disconnection& how) {
    forgetQuestions();
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
