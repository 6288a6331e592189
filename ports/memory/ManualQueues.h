#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "ports/memory/ManualClock.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/MainQueue.h"

namespace zentavo::testing {

/// All queues of one test and its main queue. Nothing runs until the test says so, and then on the thread that says
/// so: blocks of all queues in the order in which they were posted or fell due, one at a time. Any thread may post and
/// cancel; only one thread may run. Blocks that have not run when this object goes are dropped.
class ZENTAVO_EXPORT ManualQueues : public platform::DispatchQueues {
public:
    /// `clock` decides when timers fall due.
    explicit ManualQueues(std::shared_ptr<ManualClock> clock);
    ~ManualQueues() override;
    /// Drops the blocks that have not run, and from now on what is posted.
    void end();

    std::shared_ptr<platform::DispatchQueue> make(std::string label, platform::QueueKind kind) override;
    /// The same on every call.
    std::shared_ptr<platform::MainQueue> mainQueue();

    /// Runs the blocks that are ready now, without what they post meanwhile. Returns how many ran.
    std::size_t run();
    /// Runs until nothing is ready any more. A program that never becomes idle (100,000 blocks) is a fault.
    std::size_t runUntilIdle();
    /// Lets `duration` pass: turns the clock from one due moment to the next, and at each runs until idle, as also
    /// before the first. At the end the clock stands exactly `duration` later.
    std::size_t advance(std::chrono::nanoseconds duration);

    /// Blocks that are ready and have not run.
    std::size_t waiting() const;
    /// Blocks whose time has not come.
    std::size_t timers() const;

private:
    class Board;
    class Queue;
    class MainQueue;

    std::shared_ptr<ManualClock> clock_;
    std::shared_ptr<Board> board_;
    std::shared_ptr<platform::MainQueue> mainQueue_;
};

} // namespace zentavo::testing
