// What only the hand-turned clock and queues promise.

#include "ports/memory/ManualQueues.h"

#include <thread>
#include <vector>

#include <gmock/gmock.h>

namespace zentavo::testing {
namespace {

using namespace std::chrono_literals;
using platform::QueueKind;
using ::testing::ElementsAre;

class ManualQueuesTest : public ::testing::Test {
protected:
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    ManualQueues queues{clock};
    std::shared_ptr<platform::DispatchQueue> queue = queues.make("a", QueueKind::serial);
};

TEST_F(ManualQueuesTest, NothingRunsByItself) {
    int ran = 0;
    queue->async([&] {
        ++ran;
        queues.mainQueue()->async([&] { ++ran; });
    });
    queue->after(1ms, [&] { ++ran; });
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(queues.waiting(), 1U);
    EXPECT_EQ(queues.timers(), 1U);
    EXPECT_EQ(queues.run(), 1U) << "without what the block posted";
    EXPECT_EQ(queues.runUntilIdle(), 1U);
    clock->advance(1ms);
    EXPECT_EQ(ran, 2) << "turning the clock alone runs nothing";
    EXPECT_EQ(queues.runUntilIdle(), 1U);
}

TEST_F(ManualQueuesTest, AdvanceStopsAtEachDueMoment) {
    std::vector<std::chrono::nanoseconds> times;
    const auto wall = clock->now();
    std::function<void()> again = [&] {
        times.push_back(clock->steady());
        queue->after(400ms, again);
    };
    queue->after(300ms, again);
    queues.advance(1s);
    EXPECT_THAT(times, ElementsAre(300ms, 700ms));
    EXPECT_EQ(clock->steady(), 1s);
    EXPECT_EQ(clock->now() - wall, 1s);
    queues.advance(24h);
    EXPECT_EQ(times.size(), 2U + 24U * 3600U * 10U / 4U);
}

TEST_F(ManualQueuesTest, TheMainQueueIsNotCurrentInsideAnotherQueuesBlock) {
    const auto main = queues.mainQueue();
    EXPECT_TRUE(main->isCurrent()) << "the test's thread plays the host's main thread";
    bool inOther = true;
    queue->async([&] { inOther = main->isCurrent(); });
    queues.runUntilIdle();
    EXPECT_FALSE(inOther);
}

TEST_F(ManualQueuesTest, TheWallClockMayJumpAndTheSteadyOneDoesNot) {
    clock->setUTCOffset(330min);
    clock->set(std::chrono::sys_days(std::chrono::December / 31 / 2025) + 20h + 5min + 9s);
    EXPECT_EQ(clock->steady(), 0s);
    const auto local = clock->local(clock->now());
    EXPECT_EQ(logTimestamp(local), "01.01.26 - 01:35:09");
}

} // namespace
} // namespace zentavo::testing
