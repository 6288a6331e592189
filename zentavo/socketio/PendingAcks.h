#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>

#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/socketio/Event.h"

namespace zentavo::socketio {

/// The acknowledgements that a namespace waits for. Each handler is called once. On the queue only.
class PendingAcks {
public:
    /// `silent` outlives this; while it is true no handler is called.
    PendingAcks(std::shared_ptr<platform::DispatchQueue> queue, const std::atomic<bool>& silent)
        : queue_(std::move(queue)), silent_(silent) {}

    /// `onTimeout` runs after `timeout`, if that is more than 0 and nothing came before.
    void add(std::uint64_t id, AckHandler handler, std::chrono::milliseconds timeout, std::function<void()> onTimeout);
    /// The event has left: from now on a lost connection is its end.
    void sent(std::uint64_t id);
    void settle(std::uint64_t id, const Result<Arguments, AckFailure>& result);
    /// The connection was lost: nobody knows about what was sent.
    void failSent();
    void clear();

private:
    struct Waiting {
        AckHandler handler;
        platform::TimerId timer = 0;
        bool sent = false;
    };

    const std::shared_ptr<platform::DispatchQueue> queue_;
    const std::atomic<bool>& silent_;
    std::unordered_map<std::uint64_t, Waiting> waiting_;
};

} // namespace zentavo::socketio
