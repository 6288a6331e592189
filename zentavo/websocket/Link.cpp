#include "zentavo/websocket/Link.h"

#include <utility>

#include <asio/post.hpp>

#include "zentavo/websocket/SecureRandom.h"

namespace zentavo::websocket {
namespace {

// A read takes what has come in meanwhile. Connections that receive much get a large buffer, the others stay small. It
// holds a message of 64 kB as a whole, which then is not copied. A larger one yet would cost more than it saves: what is
// read is used again at once, and should still be in the cache.
constexpr std::size_t smallBuffer = 16384;
constexpr std::size_t largeBuffer = 131072;

} // namespace

Link::Link(Role role, const ConnectionOptions& options, std::shared_ptr<platform::DispatchQueue> queue)
    : options_(options), role_(role), timer_(IOThread::shared().context()) {
    delivery_ = std::make_shared<Delivery>(std::move(queue), [this] {
        resume(); // called by a block that holds this link
    });
}

Link::~Link() = default;

Sent Link::sendMessage(MessageKind kind, std::string_view content) {
    Session* session = live_.load(std::memory_order_acquire);
    const Sent sent = session != nullptr ? session->send(kind, content) : Sent::closed;
    if (sent == Sent::taken) {
        kick();
    }
    return sent;
}

Sent Link::sendPing(std::string_view content) {
    Session* session = live_.load(std::memory_order_acquire);
    const Sent sent = session != nullptr ? session->ping(content) : Sent::closed;
    if (sent == Sent::taken) {
        kick();
    }
    return sent;
}

void Link::sayGoodbye(CloseCode code, std::string_view reason) {
    if (Session* session = live_.load(std::memory_order_acquire)) {
        session->close(code, reason);
        kick();
        return;
    }
    asio::post(IOThread::shared().context(), [link = self(), code, reason = std::string(reason)] {
        link->turn([&] {
            if (link->session_) {
                link->session_->close(code, reason);
            } else if (link->phase_ == Phase::opening) {
                link->fail("closed before it was open");
            }
        });
    });
}

std::size_t Link::waiting() const {
    const Session* session = live_.load(std::memory_order_acquire);
    return session != nullptr ? session->queued() : 0;
}

void Link::abandon() {
    delivery_->detach();
    sayGoodbye(CloseCode::goingAway, {});
}

void Link::kick() {
    // A send inside a turn goes out at its end, together with all others.
    if (IOThread::isCurrent() && inTurn_) {
        return;
    }
    if (!kicked_.exchange(true)) {
        asio::post(IOThread::shared().context(), [link = self()] { link->turn([] {}); });
    }
}

void Link::finishTurn() {
    kicked_ = false;
    flush();
    settle();
    delivery_->post(self());
}

void Link::attach(std::unique_ptr<Stream> stream) {
    stream_ = std::move(stream);
    buffer_.resize(smallBuffer);
}

void Link::sendRaw(std::string bytes) { raw_ += bytes; }

void Link::begin(const Handshake& agreed, std::string first) {
    agreed_ = agreed;
    sendRaw(std::move(first));
    session_ = std::make_unique<Session>(role_, agreed.compression, options_.limits, secureRandom());
    live_.store(session_.get(), std::memory_order_release);
    phase_ = Phase::open;
    arm(Wait::keepAlive, options_.pingInterval);
    delivery_->open(*this);
}

void Link::refuse(std::string answer) {
    sendRaw(std::move(answer));
    phase_ = Phase::lingering;
    arm(Wait::linger, options_.closeTimeout);
}

void Link::read() {
    if (reading_ || dead() || !stream_) {
        return;
    }
    // Behind our goodbye nothing is delivered any more, and the answer to it may stand behind much.
    const auto held = [this] { return delivery_->full() && !session_->closing(); };
    while (!rest_.empty() && !held()) {
        turn([&] { rest_ = session_->receive(rest_, *this); });
    }
    if (dead()) {
        return;
    }
    if (!rest_.empty() || held()) {
        paused_ = true;
        return;
    }
    reading_ = true;
    target_ = phase_ == Phase::open ? session_->room() : std::span<char>();
    if (target_.size() < buffer_.size()) {
        target_ = buffer_;
    }
    stream_->read(target_, self());
}

void Link::onRead(const asio::error_code& error, std::size_t size) {
    reading_ = false;
    if (dead()) {
        return;
    }
    turn([&] {
        if (error) {
            if (session_ && phase_ == Phase::open) {
                session_->receiveEnd();
                report(session_->closed());
            } else if (phase_ == Phase::opening) {
                report({CloseCode::abnormal, "the connection ended during the handshake: " + error.message(), false});
            }
            die();
            return;
        }
        if (patience_.heard() && phase_ == Phase::open && !closeTimed_) {
            arm(Wait::keepAlive, options_.pingInterval);
        }
        std::span<char> input = target_.first(size);
        if (phase_ == Phase::opening) {
            takeHandshake(input);
        }
        if (phase_ == Phase::open) {
            rest_ = session_->receive(input, *this);
        }
    });
    if (rest_.empty()) {
        fitBuffer(size);
    }
    read();
}

/// After a read of `size` bytes, all of which have been handled.
void Link::fitBuffer(std::size_t size) {
    if (size == buffer_.size() && size < largeBuffer) {
        buffer_.resize(largeBuffer);
    } else if (std::exchange(quiet_, false) && size < smallBuffer && buffer_.size() > smallBuffer) {
        buffer_ = std::vector<char>(smallBuffer); // what came was little more than the answer to our ping
    }
}

void Link::resume() {
    asio::post(IOThread::shared().context(), [link = self()] {
        if (std::exchange(link->paused_, false)) {
            link->read();
        }
    });
}

void Link::onMessage(MessageKind kind, std::string_view content) { delivery_->message(kind, content, *this); }

/// Makes the next bytes ready; false when there are none.
bool Link::nextOutput() {
    outgoing_.clear();
    written_ = 0;
    takenFromSession_ = raw_.empty();
    if (!takenFromSession_) {
        outgoing_ = std::exchange(raw_, {});
        return true;
    }
    return session_ && session_->takeOutput(outgoing_);
}

void Link::advance(std::size_t size) {
    written_ += size;
    patience_.wrote(size);
}

void Link::flush() {
    while (!writing_ && stream_ && !dead()) {
        if (written_ == outgoing_.size() && !nextOutput()) {
            return;
        }
        advance(stream_->writeNow(std::string_view(outgoing_).substr(written_)));
        if (written_ < outgoing_.size()) {
            writing_ = true;
            stream_->write(std::string_view(outgoing_).substr(written_), self());
        } else if (takenFromSession_ && session_->written()) {
            delivery_->drain(*this);
        }
    }
}

void Link::onWritten(const asio::error_code& error, std::size_t size) {
    writing_ = false;
    if (dead()) {
        return;
    }
    turn([&] {
        if (error) {
            // What the peer said last may still be there to read, and tells more than our failure to write.
            written_ = outgoing_.size();
            if (phase_ == Phase::lingering) {
                die();
            } else if (phase_ == Phase::opening) {
                arm(Wait::handshake, options_.closeTimeout);
            } else if (!std::exchange(closeTimed_, true)) {
                arm(Wait::close, options_.closeTimeout);
            }
            return;
        }
        advance(size);
        if (written_ == outgoing_.size() && takenFromSession_ && session_->written()) {
            delivery_->drain(*this);
        }
    });
}

/// Moves on towards the end where it has begun.
void Link::settle() {
    if (phase_ == Phase::lingering && !session_ && !writing_ && !dead()) {
        stream_->shutdown(); // a refusal has been sent
        return;
    }
    if (phase_ != Phase::open || !session_->closing()) {
        return;
    }
    if (session_->finished() && !writing_) {
        linger();
    } else if (!closeTimed_) {
        closeTimed_ = true;
        goodbyeLeft_ = !writing_;
        patience_.beginGoodbye();
        resume();
        arm(Wait::close, options_.closeTimeout);
    } else if (!goodbyeLeft_ && !writing_) {
        // Only now the other end can answer.
        goodbyeLeft_ = true;
        arm(Wait::close, options_.closeTimeout);
    }
}

/// Both ends have said what they had to say. The server ends the stream; a client waits for that. Closing at once
/// could destroy our last words on their way, where the peer has sent more than we read.
void Link::linger() {
    report(session_->closed());
    phase_ = Phase::lingering;
    if (role_ == Role::server || session_->violated()) {
        stream_->shutdown();
    }
    arm(Wait::linger, options_.closeTimeout);
}

void Link::arm(Wait wait, std::chrono::milliseconds time) {
    const unsigned generation = ++timerGeneration_;
    timer_.cancel();
    if (time.count() <= 0) {
        return;
    }
    timer_.expires_after(time);
    timer_.async_wait([link = self(), wait, generation](const asio::error_code& error) {
        if (!error && generation == link->timerGeneration_ && !link->dead()) {
            link->turn([&] { link->onTimer(wait); });
        }
    });
}

void Link::onTimer(Wait wait) {
    switch (wait) {
    case Wait::connect:
        fail("connecting took too long");
        break;
    case Wait::handshake:
        fail("the handshake took too long");
        break;
    case Wait::close:
        giveUpGoodbye();
        break;
    case Wait::keepAlive:
        keepAlive();
        break;
    case Wait::linger:
        die();
        break;
    case Wait::none:
        break;
    }
}

void Link::keepAlive() {
    if (phase_ != Phase::open || session_->closing()) {
        return;
    }
    // A host that is behind keeps us from hearing.
    switch (patience_.judge(writing_, paused_)) {
    case Patience::Verdict::alive:
        arm(Wait::keepAlive, options_.pingInterval);
        break;
    case Patience::Verdict::ask:
        quiet_ = true;
        if (!writing_) {
            session_->ping({});
        }
        arm(Wait::keepAlive, options_.pingTimeout);
        break;
    case Patience::Verdict::gone:
        fail(writing_ ? "the other end neither reads nor answers" : "no answer to our ping");
        break;
    }
}

void Link::giveUpGoodbye() {
    if (!writing_) {
        fail("the other end did not answer our goodbye");
    } else if (patience_.mayTakeLonger()) {
        arm(Wait::close, options_.closeTimeout);
    } else {
        fail("the other end did not take all that was sent before our goodbye");
    }
}

void Link::fail(std::string why, CloseCode code) {
    report({code, std::move(why), false});
    die();
}

void Link::report(Closed closed) {
    if (!std::exchange(reported_, true)) {
        closed_ = std::move(closed);
        delivery_->close(*this);
    }
}

void Link::die() {
    if (dead()) {
        return;
    }
    phase_ = Phase::dead;
    ++timerGeneration_;
    timer_.cancel();
    if (session_) {
        session_->receiveEnd();
    }
    if (stream_) {
        stream_->close();
    }
    onEnd();
}

} // namespace zentavo::websocket
