#pragma once

#include <array>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/socketio/CookieJar.h"
#include "zentavo/socketio/DisconnectReason.h"
#include "zentavo/socketio/EngineAddress.h"
#include "zentavo/socketio/Transport.h"

namespace zentavo::socketio {

/// What an engine tells.
class EngineOwner {
public:
    virtual ~EngineOwner() = default;
    virtual void onEngineOpen() = 0;
    virtual void onEngineMessage(std::string_view content, bool binary) = 0;
    /// The last call, unless the engine was closed by its owner.
    virtual void onEngineEnd(const Disconnection& how) = 0;
};

/// One Engine.IO connection, for one time: the handshake, the change from polling to WebSocket, the server's pings, and
/// the frames that wait. It reaches the world through questions only. On the queue only; it may be released inside each
/// call that it makes.
class ZENTAVO_EXPORT Engine final : public TransportOwner, public std::enable_shared_from_this<Engine> {
public:
    Engine(EngineAddress address, EngineOptions options, Services services, std::shared_ptr<CookieJar> cookies,
           std::weak_ptr<EngineOwner> owner);
    ~Engine() override;

    void open();
    bool isOpen() const noexcept { return state_ == State::open; }
    /// What is sent now leaves at once, as far as this end can tell.
    bool writable() const { return state_ == State::open && !changing_ && frames_.empty() && current_->idle(); }
    /// False when the server has been silent for too long, which ends the engine: after a sleep of the machine its
    /// timer may be late.
    bool alive();
    void send(std::vector<EngineFrame> frames);
    /// Nothing is told any more. What was sent still leaves, within the close timeout, also without an owner.
    void close();

private:
    enum class State { idle, opening, open, closing, closed };
    /// The timers that there may be.
    enum class Wait { connect, ping, upgrade, close };

    void onTransportOpen(Transport& transport) override;
    void onTransportHeaders(const std::vector<platform::Header>& headers) override;
    void onTransportPacket(Transport& transport, const EnginePacket& packet) override;
    void onTransportWritable(Transport& transport) override;
    void onTransportPaused(Transport& transport) override;
    void onTransportEnd(Transport& transport, bool error, const std::string& detail) override;

    std::shared_ptr<Transport> make(TransportKind kind);
    void start();
    void onHandshake(std::string_view data);
    void beginUpgrade();
    void giveUpUpgrade();
    void flush();
    void flushAndClose();
    std::chrono::nanoseconds deadline() const;
    void watch();
    void arm(Wait wait, std::chrono::nanoseconds delay);
    void disarm(Wait wait);
    void onTimer(Wait wait);
    void end(DisconnectReason reason, std::string detail);
    void shut();

    const EngineAddress address_;
    const EngineOptions options_;
    const Services services_;
    const std::shared_ptr<CookieJar> cookies_;
    const std::weak_ptr<EngineOwner> owner_;

    State state_ = State::idle;
    std::size_t failed_ = 0; ///< so many transports brought no connection about
    TransportKind kind_;     ///< of `current_`
    std::shared_ptr<Transport> current_;
    std::shared_ptr<Transport> next_; ///< the WebSocket that is tried beside polling
    bool changing_ = false;           ///< `next_` answered: polling comes to rest, and nothing is sent
    EngineHandshake handshake_;
    std::chrono::nanoseconds heard_{0};
    std::deque<EngineFrame> frames_;
    bool goodbye_ = false;
    std::array<platform::TimerId, 4> timers_{};
    std::shared_ptr<Engine> self_; ///< while it closes without an owner
};

} // namespace zentavo::socketio
