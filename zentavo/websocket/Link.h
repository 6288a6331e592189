#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <asio/steady_timer.hpp>

#include "zentavo/websocket/ConnectionOptions.h"
#include "zentavo/websocket/Delivery.h"
#include "zentavo/websocket/Handshake.h"
#include "zentavo/websocket/IOThread.h"
#include "zentavo/websocket/Patience.h"
#include "zentavo/websocket/Session.h"
#include "zentavo/websocket/Stream.h"

namespace zentavo::websocket {

/// A connection over a stream, from the handshake to the end: what clients and servers have in common.
///
/// Everything happens on the I/O thread in turns: a turn handles all that one read brought, then writes all that it led
/// to in one go, then hands all its events to the host. Only the members that say so may be called by others. A link
/// lives until its stream is closed and the last operation on it has come back.
class Link : public StreamEvents, public SessionHandler, public DeliveryTarget {
public:
    Link(Role role, const ConnectionOptions& options, std::shared_ptr<platform::DispatchQueue> queue);
    ~Link() override;

    // Any thread.
    Sent sendMessage(MessageKind kind, std::string_view content);
    Sent sendPing(std::string_view content);
    void sayGoodbye(CloseCode code, std::string_view reason);
    std::size_t waiting() const;
    /// The host is gone: no more events, and a goodbye.
    void abandon();

protected:
    virtual std::shared_ptr<Link> self() = 0;
    /// Takes bytes of the handshake; ends with `begin`, `refuse` or `fail`, or wants more.
    virtual void takeHandshake(std::span<char>& input) = 0;
    /// The stream is closed and no event will come; a link may be forgotten.
    virtual void onEnd() {}

    /// Runs `body` as a turn.
    template <class Body>
    void turn(Body&& body) {
        inTurn_ = true;
        body();
        finishTurn();
        inTurn_ = false;
    }
    /// The stream is there; `timer` still guards the handshake.
    void attach(std::unique_ptr<Stream> stream);
    /// The handshake is over: `first` goes out before any frame.
    void begin(const Handshake& agreed, std::string first);
    /// Sends `answer` instead, and ends.
    void refuse(std::string answer);
    /// Ends at once, without a goodbye.
    void fail(std::string why, CloseCode code = CloseCode::abnormal);
    void sendRaw(std::string bytes);
    void read();

    enum class Wait { none, connect, handshake, keepAlive, close, linger };
    void arm(Wait wait, std::chrono::milliseconds time);
    bool dead() const noexcept { return phase_ == Phase::dead; }
    bool isOpen() const noexcept { return session_ != nullptr; }

    const Handshake& agreed() const noexcept { return agreed_; }
    const Closed& closed() const noexcept { return closed_; }

    const ConnectionOptions options_;
    std::shared_ptr<Delivery> delivery_;

private:
    enum class Phase { opening, open, lingering, dead };

    void onRead(const asio::error_code& error, std::size_t size) override;
    void onWritten(const asio::error_code& error, std::size_t size) override;
    void onMessage(MessageKind kind, std::string_view content) override;
    /// However much a read expands to, about as much as may wait is handed on at a time.
    bool enough() override { return delivery_->full(); }
    void onTimer(Wait wait);

    void finishTurn();
    void resume();
    void fitBuffer(std::size_t size);
    void flush();
    void advance(std::size_t size);
    bool nextOutput();
    void settle();
    void linger();
    void keepAlive();
    void giveUpGoodbye();
    void report(Closed closed);
    void die();
    void kick();

    const Role role_;
    Phase phase_ = Phase::opening;
    std::unique_ptr<Stream> stream_;
    std::unique_ptr<Session> session_;
    std::atomic<Session*> live_ = nullptr; ///< `session_` for other threads; it lives as long as the link
    Handshake agreed_;
    Closed closed_;

    std::vector<char> buffer_;
    std::span<char> target_; ///< of the read under way: `buffer_`, or the room for a long message
    std::span<char> rest_;   ///< of the last read: what has not been handled, since the host is behind
    bool reading_ = false;
    bool paused_ = false; ///< the host is behind
    bool quiet_ = false;  ///< nothing has come for a ping interval: a large buffer may go

    std::string raw_; ///< of the handshake, before any frame
    std::string outgoing_;
    std::size_t written_ = 0;
    bool writing_ = false;
    bool takenFromSession_ = false;

    bool inTurn_ = false;
    std::atomic<bool> kicked_ = false;
    bool reported_ = false;
    bool closeTimed_ = false;
    bool goodbyeLeft_ = false;
    Patience patience_;

    asio::steady_timer timer_;
    unsigned timerGeneration_ = 0;
};

} // namespace zentavo::websocket
