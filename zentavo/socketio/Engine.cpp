#include "zentavo/socketio/Engine.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

#include "zentavo/socketio/PollingTransport.h"
#include "zentavo/socketio/WebSocketTransport.h"

namespace zentavo::socketio {

namespace {
constexpr std::string_view probe = "probe";
/// Servers send a few cookies; more are not looked at.
constexpr std::size_t mostHeaders = 200;

bool isSetCookie(const std::string& name) {
    constexpr std::string_view wanted = "set-cookie";
    return name.size() == wanted.size() && std::equal(name.begin(), name.end(), wanted.begin(),
                                                      [](char a, char b) { return a == b || (a | 0x20) == b; });
}
} // namespace

Engine::Engine(EngineAddress address, EngineOptions options, Services services, std::shared_ptr<CookieJar> cookies,
               std::weak_ptr<EngineOwner> owner)
    : address_(std::move(address)), options_(std::move(options)), services_(std::move(services)),
      cookies_(std::move(cookies)), owner_(std::move(owner)), kind_(options_.transports.front()) {}

Engine::~Engine() { shut(); }

std::shared_ptr<Transport> Engine::make(TransportKind kind) {
    if (kind == TransportKind::polling) {
        return std::make_shared<PollingTransport>(address_, options_, services_, weak_from_this());
    }
    return std::make_shared<WebSocketTransport>(address_, options_, services_, *cookies_, weak_from_this());
}

void Engine::open() {
    state_ = State::opening;
    start();
}

void Engine::start() {
    kind_ = options_.transports[failed_];
    arm(Wait::connect, options_.connectTimeout);
    current_ = make(kind_);
    current_->open({});
}

void Engine::onTransportOpen(Transport& transport) {
    if (&transport == next_.get()) {
        std::deque<EngineFrame> frames{engineFrame(EnginePacketType::ping, probe)};
        transport.send(frames);
    }
}

void Engine::onTransportHeaders(const std::vector<platform::Header>& headers) {
    std::size_t looked = 0;
    for (const auto& [name, value] : headers) {
        if (++looked > mostHeaders) {
            break;
        }
        if (options_.cookies && isSetCookie(name)) {
            cookies_->take(value, services_.clock->steady(), services_.clock->now());
        }
    }
}

void Engine::onTransportPacket(Transport& transport, const EnginePacket& packet) {
    heard_ = services_.clock->steady();
    if (&transport == next_.get()) {
        // Only an answered probe changes the way; whatever else comes too early is of no meaning.
        if (packet.type == EnginePacketType::pong && packet.data == probe && !changing_) {
            changing_ = true;
            const auto polling = current_; // replaced inside the call when it rests already
            polling->pause();
        }
        return;
    }
    if (state_ == State::opening) {
        if (packet.type != EnginePacketType::open || packet.binary) {
            end(DisconnectReason::transportError, "the server began without a handshake");
        } else {
            onHandshake(packet.data);
        }
        return;
    }
    switch (packet.type) {
    case EnginePacketType::message:
        if (const auto owner = owner_.lock(); owner && state_ == State::open) {
            owner->onEngineMessage(packet.data, packet.binary);
        }
        break;
    case EnginePacketType::ping:
        // One pong waits at most: a server that pings and takes nothing must not fill our memory.
        if (frames_.empty() || frames_.back().binary || frames_.back().bytes.front() != '3') {
            frames_.push_back(engineFrame(EnginePacketType::pong));
        }
        flush();
        break;
    case EnginePacketType::close:
        end(DisconnectReason::transportClose, "the server closed the connection");
        break;
    case EnginePacketType::open:
        end(DisconnectReason::transportError, "the server said its handshake twice");
        break;
    case EnginePacketType::pong:
    case EnginePacketType::upgrade:
    case EnginePacketType::noop:
        break;
    }
}

void Engine::onHandshake(std::string_view data) {
    const auto read = readEngineHandshake(data);
    if (!read) {
        end(DisconnectReason::transportError, read.error().message);
        return;
    }
    handshake_ = *read;
    state_ = State::open;
    disarm(Wait::connect);
    watch();
    current_->setHandshake(handshake_);
    if (const auto owner = owner_.lock()) {
        owner->onEngineOpen();
    }
    if (state_ == State::open) {
        beginUpgrade();
    }
}

void Engine::beginUpgrade() {
    const auto allowed = std::span(options_.transports).subspan(failed_);
    if (kind_ != TransportKind::polling || !options_.upgrade || !handshake_.offersWebSocket ||
        std::find(allowed.begin(), allowed.end(), TransportKind::webSocket) == allowed.end()) {
        return;
    }
    arm(Wait::upgrade, options_.upgradeTimeout);
    next_ = make(TransportKind::webSocket);
    next_->open(handshake_.sid);
}

void Engine::onTransportPaused(Transport& transport) {
    if (&transport != current_.get() || !changing_) {
        return;
    }
    disarm(Wait::upgrade);
    current_->close();
    current_ = std::exchange(next_, nullptr);
    kind_ = TransportKind::webSocket;
    changing_ = false;
    frames_.push_front(engineFrame(EnginePacketType::upgrade));
    flush();
}

void Engine::giveUpUpgrade() {
    disarm(Wait::upgrade);
    if (const auto given = std::exchange(next_, nullptr)) {
        given->close();
    }
    if (std::exchange(changing_, false)) {
        current_->resume();
        flush();
    }
}

void Engine::onTransportWritable(Transport& transport) {
    if (&transport == current_.get()) {
        flush();
    }
}

void Engine::onTransportEnd(Transport& transport, bool error, const std::string& detail) {
    if (&transport == current_.get()) {
        end(error ? DisconnectReason::transportError : DisconnectReason::transportClose, detail);
    } else if (&transport == next_.get()) {
        giveUpUpgrade();
    }
}

bool Engine::alive() {
    if (state_ == State::open && services_.clock->steady() >= deadline()) {
        end(DisconnectReason::pingTimeout, {});
    }
    return state_ == State::open;
}

void Engine::send(std::vector<EngineFrame> frames) {
    if (state_ == State::open) {
        std::move(frames.begin(), frames.end(), std::back_inserter(frames_));
        flush();
    }
}

void Engine::flush() {
    if (state_ == State::closing) {
        flushAndClose();
    } else if (state_ == State::open && !changing_ && !frames_.empty() && current_->writable()) {
        current_->send(frames_);
    }
}

void Engine::close() {
    if (state_ != State::open) {
        shut();
        return;
    }
    state_ = State::closing;
    self_ = shared_from_this();
    disarm(Wait::ping);
    arm(Wait::close, options_.closeTimeout);
    if (next_ && !changing_) {
        giveUpUpgrade();
    }
    flush();
}

void Engine::flushAndClose() {
    if (changing_ || !current_->writable()) {
        return;
    }
    if (kind_ == TransportKind::polling && !goodbye_) {
        goodbye_ = true; // a WebSocket says goodbye in its own words
        frames_.push_back(engineFrame(EnginePacketType::close));
    }
    if (!frames_.empty()) {
        current_->send(frames_);
    }
    if (frames_.empty() && current_->writable()) {
        shut();
    }
}

std::chrono::nanoseconds Engine::deadline() const { return heard_ + handshake_.pingInterval + handshake_.pingTimeout; }

void Engine::watch() { arm(Wait::ping, deadline() - services_.clock->steady()); }

void Engine::arm(Wait wait, std::chrono::nanoseconds delay) {
    disarm(wait);
    timers_[static_cast<std::size_t>(wait)] = services_.queue->after(delay, [weak = weak_from_this(), wait] {
        if (const auto self = weak.lock()) {
            self->onTimer(wait);
        }
    });
}

void Engine::disarm(Wait wait) {
    if (const auto timer = std::exchange(timers_[static_cast<std::size_t>(wait)], 0)) {
        services_.queue->cancel(timer);
    }
}

void Engine::onTimer(Wait wait) {
    timers_[static_cast<std::size_t>(wait)] = 0;
    switch (wait) {
    case Wait::connect:
        if (state_ == State::opening) {
            end(DisconnectReason::transportError, "the server did not answer in time");
        }
        break;
    case Wait::ping:
        // Any packet counts, so most of the time this only looks again.
        if (alive()) {
            watch();
        }
        break;
    case Wait::upgrade:
        giveUpUpgrade();
        break;
    case Wait::close:
        shut();
        break;
    }
}

void Engine::end(DisconnectReason reason, std::string detail) {
    if (state_ == State::opening && options_.tryAllTransports && failed_ + 1 < options_.transports.size()) {
        ++failed_;
        current_->close(); // it may be the one that calls, and holds itself meanwhile
        start();
        return;
    }
    const auto self = shared_from_this();
    const bool told = state_ == State::opening || state_ == State::open;
    shut();
    if (const auto owner = owner_.lock(); owner && told) {
        owner->onEngineEnd({reason, std::move(detail)});
    }
}

void Engine::shut() {
    state_ = State::closed;
    changing_ = false;
    frames_.clear();
    for (auto wait : {Wait::connect, Wait::ping, Wait::upgrade, Wait::close}) {
        disarm(wait);
    }
    // Kept until this object goes: one of them may be calling.
    for (const auto& transport : {current_, next_}) {
        if (transport) {
            transport->close();
        }
    }
    const auto last = std::exchange(self_, nullptr);
}

} // namespace zentavo::socketio
