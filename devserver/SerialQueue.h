#pragma once

#include <chrono>
#include <map>
#include <thread>
#include <utility>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/DispatchQueue.h"

namespace zentavo::devserver {

/// A serial queue on a thread of its own, which its owner stops.
class SerialQueue final : public platform::DispatchQueue {
public:
    SerialQueue();
    ~SerialQueue() override;

    void async(platform::Block block) override;
    platform::TimerId after(std::chrono::nanoseconds delay, platform::Block block) override;
    bool cancel(platform::TimerId timer) override;

    /// Returns when the block that runs has ended; those that wait are dropped, and so are later ones. Not to be called
    /// on the queue.
    void stop();

private:
    using Clock = std::chrono::steady_clock;

    void run();

    Mutex mutex_;
    ConditionVariable changed_;
    /// By the time when they are due, then in the order of posting.
    std::map<std::pair<Clock::time_point, platform::TimerId>, platform::Block> blocks_ ZENTAVO_GUARDED_BY(mutex_);
    platform::TimerId last_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    bool stopped_ ZENTAVO_GUARDED_BY(mutex_) = false;
    std::thread thread_;
};

} // namespace zentavo::devserver
