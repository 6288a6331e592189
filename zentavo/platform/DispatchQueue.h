#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "zentavo/foundation/Export.h"

namespace zentavo::platform {

using Block = std::function<void()>;
/// Names a block that waits for its time; 0 names none.
using TimerId = std::uint64_t;

/// Runs blocks elsewhere. Any thread may post.
///
/// Order: a block posted later on a serial queue starts after the earlier one ended. On a concurrent queue blocks may
/// run at the same time; a port with one worker may run them one by one.
/// Never inside the posting call: `async` and `after` return before the block starts, also when called on the queue.
/// Lifetime: a queue may be released with blocks still waiting; they run all the same. Each block is destroyed on the
/// queue's thread after it ran, or on the thread that cancels it.
/// End: when the process exits, waiting blocks are dropped; a post after that is dropped.
/// A block must not throw.
class ZENTAVO_EXPORT DispatchQueue {
public:
    virtual ~DispatchQueue() = default;

    virtual void async(Block block) = 0;

    /// Runs `block` once, not before `delay` has passed on the steady clock. Blocks due at one moment run in the order
    /// of posting; a negative delay counts as none.
    virtual TimerId after(std::chrono::nanoseconds delay, Block block) = 0;

    /// Takes back what `after` posted. True when the block has not started and now never will.
    virtual bool cancel(TimerId timer) = 0;
};

enum class QueueKind { serial, concurrent };

class ZENTAVO_EXPORT DispatchQueues {
public:
    virtual ~DispatchQueues() = default;

    /// A new queue. `label` is for debuggers and logs; two queues may share one.
    virtual std::shared_ptr<DispatchQueue> make(std::string label, QueueKind kind) = 0;
};

} // namespace zentavo::platform
