#pragma once

#include <functional>
#include <optional>
#include <string>

#include "zentavo/foundation/Value.h"
#include "zentavo/socketio/Backoff.h"
#include "zentavo/socketio/EngineOptions.h"

namespace zentavo::socketio {

struct ManagerOptions : EngineOptions {
    /// A connection that was lost, or never came about, is tried again.
    bool reconnects = true;
    Backoff backoff{};
    /// How often in a row; none: for ever.
    std::optional<unsigned> reconnectAttempts{};
};

/// What a manager tells, on its queue. Any may be empty.
struct ManagerHandlers {
    /// Attempt number `attempt`, counted from 1, begins.
    std::function<void(unsigned attempt)> onReconnectAttempt;
    /// The connection is there again, after so many attempts.
    std::function<void(unsigned attempts)> onReconnect;
    /// The last attempt failed; nothing is tried before the next `connect`.
    std::function<void()> onReconnectFailed;
    /// An attempt failed, the first one included.
    std::function<void(const std::string& message)> onError;
};

/// What a namespace is told about who joins.
struct Auth {
    Map payload;
    /// Asked anew each time a namespace is joined, also after a reconnection, on the manager's queue: tokens grow old.
    /// It calls `reply` once, on any thread, then or later. Goes before `payload`.
    std::function<void(std::function<void(Map)> reply)> provider = nullptr;
};

} // namespace zentavo::socketio
