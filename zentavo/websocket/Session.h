#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/websocket/Deflate.h"
#include "zentavo/websocket/Extensions.h"
#include "zentavo/websocket/FrameParser.h"
#include "zentavo/websocket/MaskKeys.h"
#include "zentavo/websocket/MessageAssembler.h"

namespace zentavo::websocket {

/// Told by `Session::receive`, on its thread, with no lock held. Views hold during the call only.
class ZENTAVO_EXPORT SessionHandler {
public:
    virtual ~SessionHandler() = default;
    virtual void onMessage(MessageKind kind, std::string_view content) = 0;
    /// A ping has been answered already.
    virtual void onPing(std::string_view) {}
    virtual void onPong(std::string_view) {}
    /// Asked after each message: true ends `receive` for now.
    virtual bool enough() { return false; }
};

enum class Sent {
    taken,
    /// The queue is full: nothing was taken, try again when it has drained.
    full,
    /// The connection is closing or closed.
    closed,
};

struct SessionLimits {
    /// Bytes of a received message, expanded.
    std::size_t maximumMessage = std::size_t{16} << 20U;
    /// Bytes that wait to be sent, with the heads of their frames. A message larger than that is taken when nothing else
    /// waits.
    std::size_t maximumQueued = std::size_t{16} << 20U;
};

/// One end of an open connection without the network: bytes in, messages out, and the other way round. The handshake is
/// over when a session begins.
///
/// Threads: any thread may send; `receive` and `receiveEnd` are called by one thread at a time. Not destroyed from
/// inside its handler.
class ZENTAVO_EXPORT Session {
public:
    Session(Role role, const std::optional<DeflateAgreement>& compression, const SessionLimits& limits,
            std::shared_ptr<platform::Random> random);
    ~Session();

    /// Takes what the network brought; its bytes are unmasked in place. All frames in it are handled before it returns,
    /// unless the handler has had enough: then the rest is returned, which comes first in the next call. Bytes behind the
    /// peer's close frame, or behind a violation, are dropped.
    std::span<char> receive(std::span<char> bytes, SessionHandler& handler);
    /// Where the network would best put what it brings next, for `receive`: a long message then needs no copy. Empty
    /// where any place will do.
    std::span<char> room();
    /// The network ended.
    void receiveEnd();

    Sent send(MessageKind kind, std::string_view content);
    /// At most 125 bytes are sent. A small ping still finds room where a message does not, until the queue is full to the
    /// last byte.
    Sent ping(std::string_view content);
    /// Says goodbye, once; a code that may not be sent becomes an empty close frame. Messages that arrive from now on
    /// are dropped.
    void close(CloseCode code, std::string_view reason);

    /// Moves what waits to be sent into `bytes`, which was empty; it counts as queued until `written`. False when there
    /// is nothing. One thread at a time.
    bool takeOutput(std::string& bytes);
    /// What was taken has been sent. True, once, when a `send` was refused and half of the queue is free again.
    bool written();
    std::size_t queued() const;

    /// Nothing more will be received: the peer's close frame has come, or a violation, or the end.
    bool finished() const noexcept { return finished_.load(std::memory_order_acquire); }
    /// Our close frame is on its way or sent.
    bool closing() const noexcept { return closing_.load(std::memory_order_acquire); }
    /// How it ended; when `finished`. The peer was at fault when `violated`.
    const Closed& closed() const noexcept { return closed_; }
    bool violated() const noexcept { return violated_; }

private:
    class Sender;

    void fail(const Violation& violation);
    void finish(Closed closed);

    FrameParser parser_;
    MessageAssembler assembler_;
    bool violated_ = false;
    Closed closed_;
    std::atomic<bool> finished_ = false;
    std::atomic<bool> closing_ = false;

    mutable Mutex mutex_;
    const std::unique_ptr<Sender> sender_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::websocket
