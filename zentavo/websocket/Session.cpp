#include "zentavo/websocket/Session.h"

#include <algorithm>
#include <utility>

#include "zentavo/websocket/FrameWriter.h"

namespace zentavo::websocket {
namespace {

std::unique_ptr<Inflater> inflaterOf(Role role, const std::optional<DeflateAgreement>& agreed) {
    if (!agreed) {
        return nullptr;
    }
    const auto& peer = role == Role::client ? agreed->server : agreed->client;
    return std::make_unique<Inflater>(peer.windowBits, peer.takeover);
}

// A queue that one large message made is given back.
constexpr std::size_t keptCapacity = std::size_t{4} << 20U;

} // namespace

/// What leaves this end. Its owner holds the lock.
class Session::Sender {
public:
    Sender(Role role, const std::optional<DeflateAgreement>& agreed, std::size_t limit,
           std::shared_ptr<platform::Random> random)
        : role_(role), limit_(limit), keys_(std::move(random)) {
        if (agreed) {
            const auto& own = role == Role::client ? agreed->client : agreed->server;
            deflater_ = std::make_unique<Deflater>(own.windowBits, own.takeover, agreed->level);
            threshold_ = agreed->threshold;
        }
    }

    void frame(FrameHeader header, std::string_view payload) {
        appendFrame(out_, header, payload, role_ == Role::client ? std::optional(keys_.next()) : std::nullopt);
    }

    bool message(MessageKind kind, std::string_view content) {
        const std::size_t waiting = queued();
        // The head counts too, or empty messages would always find room.
        if (waiting != 0 && content.size() + maximumFrameHeader > limit_ - std::min(limit_, waiting)) {
            refused_ = true;
            return false;
        }
        FrameHeader header;
        header.opcode = kind == MessageKind::text ? Opcode::text : Opcode::binary;
        if (deflater_ && content.size() >= threshold_) {
            const std::string_view small = deflater_->compress(content);
            if (!small.empty()) {
                header.compressed = true;
                frame(header, small);
                return true;
            }
        }
        frame(header, content);
        return true;
    }

    bool ping(std::string_view content) {
        if (queued() >= limit_) {
            refused_ = true;
            return false;
        }
        frame({true, false, Opcode::ping, 0}, content);
        return true;
    }

    /// A peer that pings and never reads does not fill our memory.
    void pong(std::string_view content) {
        if (queued() < limit_) {
            frame({true, false, Opcode::pong, 0}, content);
        }
    }

    bool take(std::string& bytes) {
        if (out_.empty()) {
            return false;
        }
        std::swap(out_, bytes);
        inFlight_ = bytes.size();
        if (out_.capacity() > keptCapacity) {
            out_.shrink_to_fit();
        }
        return true;
    }

    bool written() {
        inFlight_ = 0;
        return refused_ && queued() <= limit_ / 2 && std::exchange(refused_, false);
    }

    std::size_t queued() const { return out_.size() + inFlight_; }

private:
    const Role role_;
    const std::size_t limit_;
    MaskKeys keys_;
    std::unique_ptr<Deflater> deflater_;
    std::size_t threshold_ = 0;
    std::string out_;
    std::size_t inFlight_ = 0;
    bool refused_ = false;
};

Session::Session(Role role, const std::optional<DeflateAgreement>& compression, const SessionLimits& limits,
                 std::shared_ptr<platform::Random> random)
    : parser_(role, compression.has_value()), assembler_(limits.maximumMessage, inflaterOf(role, compression)),
      sender_(std::make_unique<Sender>(role, compression, limits.maximumQueued, std::move(random))) {}

Session::~Session() = default;

std::span<char> Session::receive(std::span<char> bytes, SessionHandler& handler) {
    while (!finished()) {
        switch (parser_.next(bytes)) {
        case FrameParser::Step::needMore:
            return {};
        case FrameParser::Step::violation:
            fail(parser_.violation());
            return {};
        case FrameParser::Step::piece:
            break;
        }
        switch (assembler_.take(parser_.piece())) {
        case MessageAssembler::Outcome::more:
            break;
        case MessageAssembler::Outcome::message:
            if (!closing()) {
                handler.onMessage(assembler_.kind(), assembler_.content());
                if (handler.enough()) {
                    return bytes;
                }
            }
            break;
        case MessageAssembler::Outcome::ping: {
            {
                MutexLock lock(mutex_);
                if (!closing()) {
                    sender_->pong(assembler_.content());
                }
            }
            handler.onPing(assembler_.content());
            break;
        }
        case MessageAssembler::Outcome::pong:
            handler.onPong(assembler_.content());
            break;
        case MessageAssembler::Outcome::close:
            close(assembler_.closeCode(), {});
            finish({assembler_.closeCode(), std::string(assembler_.content()), true});
            break;
        case MessageAssembler::Outcome::violation:
            fail(assembler_.violation());
            break;
        }
    }
    return {};
}

std::span<char> Session::room() {
    const bool data = !finished() && parser_.missing() != 0 && !isControl(parser_.piece().header.opcode);
    return data ? assembler_.room(parser_.missing()) : std::span<char>();
}

void Session::receiveEnd() {
    if (!finished()) {
        closing_.store(true, std::memory_order_release);
        finish({CloseCode::abnormal, "the connection ended without a close frame", false});
    }
}

void Session::fail(const Violation& violation) {
    violated_ = true;
    close(violation.code, violation.reason);
    finish({violation.code, violation.reason, false});
}

void Session::finish(Closed closed) {
    closed_ = std::move(closed);
    finished_.store(true, std::memory_order_release);
}

Sent Session::send(MessageKind kind, std::string_view content) {
    MutexLock lock(mutex_);
    if (closing()) {
        return Sent::closed;
    }
    return sender_->message(kind, content) ? Sent::taken : Sent::full;
}

Sent Session::ping(std::string_view content) {
    MutexLock lock(mutex_);
    if (closing()) {
        return Sent::closed;
    }
    return sender_->ping(content.substr(0, maximumControlPayload)) ? Sent::taken : Sent::full;
}

void Session::close(CloseCode code, std::string_view reason) {
    MutexLock lock(mutex_);
    if (closing_.exchange(true)) {
        return;
    }
    sender_->frame({true, false, Opcode::close, 0}, closePayload(maySend(code) ? code : CloseCode::noStatus, reason));
}

bool Session::takeOutput(std::string& bytes) {
    MutexLock lock(mutex_);
    return sender_->take(bytes);
}

bool Session::written() {
    MutexLock lock(mutex_);
    return sender_->written();
}

std::size_t Session::queued() const {
    MutexLock lock(mutex_);
    return sender_->queued();
}

} // namespace zentavo::websocket
