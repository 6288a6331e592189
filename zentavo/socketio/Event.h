#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/Value.h"
#include "zentavo/socketio/Arguments.h"
#include "zentavo/socketio/DisconnectReason.h"

namespace zentavo::socketio {

/// Whether an event was taken to be sent. Unlike other results it may be left alone: who says only what JSON can say,
/// and keeps to the limits, has nothing to look at.
class Emitted : public Result<void> {
public:
    Emitted(Result<void> result) : Result<void>(std::move(result)) {}
};

/// Answers an event that the server wants acknowledged. Copies are one: it answers once. Any thread, also much later;
/// an answer for a connection that has ended meanwhile is dropped.
class ZENTAVO_EXPORT Acknowledge {
public:
    class Receiver;

    Acknowledge() = default;
    explicit Acknowledge(std::shared_ptr<Receiver> receiver) : receiver_(std::move(receiver)) {}

    /// Whether the server wants an answer.
    explicit operator bool() const noexcept { return receiver_ != nullptr; }
    /// An error for what cannot be sent, after which another answer may be tried; for the second answer; and where none
    /// is wanted.
    Emitted operator()(Arguments arguments = {}) const;

private:
    std::shared_ptr<Receiver> receiver_;
};

/// An event from the server; one of our own for any-handlers; or "connect", "disconnect" and "connect_error", which
/// this library says itself.
struct Event {
    std::string name;
    Arguments arguments;
    Acknowledge acknowledge = {};
};
using EventHandler = std::function<void(const Event&)>;
/// Names a handler, to take it away again.
enum class HandlerId : std::uint64_t { none = 0 };

/// Why a namespace could not be joined.
struct ConnectError {
    std::string message;
    /// What the server's middleware added; null when it was the connection that failed.
    Value data;
    /// Not tried again before the next `connect`: the server itself refused, or joining took too long.
    bool refused = false;
};

/// Why there is no acknowledgement.
enum class AckFailure {
    timedOut,
    disconnected, ///< the connection ended after the event was sent: nobody knows whether it arrived
};
using AckHandler = std::function<void(const Result<Arguments, AckFailure>&)>;

} // namespace zentavo::socketio
