#pragma once

#include <atomic>
#include <chrono>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ports/linux/ServiceThread.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/DispatchQueue.h"

namespace zentavo::linux_port {

/// The one thread on which the SDK's blocks run, those of all queues, one after the other in the order in which they
/// were posted or fell due. It starts with the first block. Any thread may post, cancel and ask.
class WorkerThread {
public:
    WorkerThread();
    /// Waits for the block that is running and drops the others. Not on the worker.
    ~WorkerThread();

    void async(platform::Block block);
    platform::TimerId after(std::chrono::nanoseconds delay, platform::Block block);
    bool cancel(platform::TimerId timer);

    bool isCurrent() const noexcept { return thread_.isCurrent(); }

    /// From now on no block starts, and what is posted is dropped. Blocks that wait are kept as they are: destroying
    /// them would run the host's destructors at a moment that it did not choose.
    void end();
    /// After `end`: waits for the block that is running, at most `bound`; on the worker itself not at all.
    void join(std::chrono::milliseconds bound);
    /// In the child of a fork. Where the thread had started it is the parent's, and the lock may be held for ever:
    /// everything is dropped.
    void forkedAway() noexcept;

private:
    using Clock = std::chrono::steady_clock;
    struct Timer {
        Clock::time_point due;
        platform::Block block;
    };

    void run();
    void runTimer(platform::TimerId id);
    /// True when the worker sleeps and is to be notified, once the lock is gone.
    [[nodiscard]] bool makeReady(platform::Block block) ZENTAVO_REQUIRES(mutex_);
    void takeDueTimers() ZENTAVO_REQUIRES(mutex_);

    std::atomic<bool> ended_ = false;
    std::vector<platform::Block> running_; ///< the worker's own: what it took from `ready_`

    Mutex mutex_;
    ConditionVariable wake_;
    ServiceThread thread_;
    bool started_ ZENTAVO_GUARDED_BY(mutex_) = false;
    bool asleep_ ZENTAVO_GUARDED_BY(mutex_) = false;
    std::vector<platform::Block> ready_ ZENTAVO_GUARDED_BY(mutex_);
    platform::TimerId lastTimer_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    /// Timers that have not started; a due one is here until the worker comes to it, and can still be cancelled.
    std::unordered_map<platform::TimerId, Timer> timers_ ZENTAVO_GUARDED_BY(mutex_);
    /// Those of them that are not due yet, in the order in which they will be.
    std::set<std::pair<Clock::time_point, platform::TimerId>> schedule_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::linux_port
