// How the worker ends; what it does while it lives is in QueueConformance.cpp.

#include "ports/linux/WorkerThread.h"

#include <atomic>
#include <future>
#include <memory>

#include <gtest/gtest.h>

namespace zentavo::linux_port {
namespace {

using namespace std::chrono_literals;

TEST(WorkerThread, EndKeepsWaitingBlocksAsTheyAreAndDropsLateOnes) {
    auto worker = std::make_unique<WorkerThread>();
    const auto held = std::make_shared<int>(0);
    std::promise<void> started;
    std::promise<void> release;
    std::atomic<bool> ran = false;
    worker->async([&] { // so that the worker takes both at once
        worker->async([&] {
            started.set_value();
            release.get_future().wait();
        });
        worker->async([&, held] { ran = true; });
    });
    started.get_future().wait();
    worker->after(1ms, [&, held] { ran = true; });
    worker->end();

    const auto begun = std::chrono::steady_clock::now();
    worker->join(20ms);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 2s) << "a host's block that never ends holds nobody up";
    EXPECT_EQ(held.use_count(), 3);
    worker->async([&, held] { ran = true; });
    EXPECT_EQ(worker->after(1ms, [&, held] { ran = true; }), 0U);
    EXPECT_EQ(held.use_count(), 3) << "what comes after the end is dropped at once";

    release.set_value();
    // `join` has left the thread to itself: it touches the worker until its block has returned, so the worker stays.
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(ran);
    [[gnu::used]] static auto* const kept = worker.release(); // never destroyed, like the process-wide worker
}

TEST(WorkerThread, MayBeEndedFromItsOwnBlock) {
    WorkerThread worker;
    std::promise<bool> current;
    worker.async([&] {
        worker.end();
        worker.join(1h); // not on itself: returns at once
        current.set_value(worker.isCurrent());
    });
    EXPECT_TRUE(current.get_future().get());
    EXPECT_FALSE(worker.isCurrent());
}

} // namespace
} // namespace zentavo::linux_port
