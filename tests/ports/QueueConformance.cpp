// What DispatchQueue.h and MainQueue.h promise, held against every port.

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "tests/ports/Port.h"

namespace zentavo::tests {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

class QueueConformance : public PortTest {
protected:
    std::shared_ptr<platform::DispatchQueue> make(platform::QueueKind kind = platform::QueueKind::serial) {
        return port->queues().make("test", kind);
    }
    /// Waits until `note` was called `count` times, and says in which order.
    std::vector<int> notes(std::size_t count) {
        port->until([&] {
            std::lock_guard lock(mutex_);
            return notes_.size() >= count;
        });
        std::lock_guard lock(mutex_);
        return notes_;
    }
    void note(int what) {
        std::lock_guard lock(mutex_);
        notes_.push_back(what);
    }
    void forget() {
        std::lock_guard lock(mutex_);
        notes_.clear();
    }

private:
    std::mutex mutex_;
    std::vector<int> notes_;
};

TEST_P(QueueConformance, ABlockNeverStartsInsideThePostingCall) {
    const auto queue = make();
    queue->async([&] {
        queue->async([&] { note(2); });
        queue->after(0ms, [&] { note(3); });
        note(1);
    });
    EXPECT_THAT(notes(3), ElementsAre(1, 2, 3));
}

TEST_P(QueueConformance, BlocksDueAtOneMomentRunInTheOrderOfPosting) {
    const auto queue = make();
    queue->async([&] { // from a block, so that nothing runs between the posts
        queue->async([&] { note(1); });
        queue->after(0ms, [&] { note(2); });
        queue->async([&] { note(3); });
        queue->after(-5s, [&] { note(4); });
        queue->async([&] { note(5); });
    });
    EXPECT_THAT(notes(5), ElementsAre(1, 2, 3, 4, 5));
}

TEST_P(QueueConformance, TimersRunByTheirTimeAndNotBefore) {
    const auto queue = make();
    std::atomic<bool> late = false;
    const auto post = [&] {
        const auto begun = std::chrono::steady_clock::now();
        queue->after(30ms, [&] { note(3); });
        queue->after(10ms, [&] { note(1); });
        queue->after(20ms, [&] { note(2); });
        return std::chrono::steady_clock::now() - begun;
    };
    while (post() >= 10ms) { // the machine held us up: times of another order
        notes(3);
        forget();
    }
    queue->after(1h, [&] { late = true; });
    EXPECT_THAT(notes(3), ElementsAre(1, 2, 3));
    port->pass(50ms);
    EXPECT_FALSE(late);

    const auto begun = std::chrono::steady_clock::now();
    port->pass(20ms);
    if (port->hasItsOwnThread()) {
        EXPECT_GE(std::chrono::steady_clock::now() - begun, 20ms);
    }
}

TEST_P(QueueConformance, AnEarlierTimerWakesAQueueThatWaitsForALaterOne) {
    const auto queue = make();
    queue->after(1h, [&] { note(9); });
    port->pass(5ms);
    queue->after(5ms, [&] { note(1); });
    EXPECT_THAT(notes(1), ElementsAre(1));
}

TEST_P(QueueConformance, CancelTakesBackWhatHasNotStarted) {
    const auto queue = make();
    const auto held = std::make_shared<int>(0);
    const auto timer = queue->after(1h, [held, this] { note(9); });
    EXPECT_EQ(held.use_count(), 2);
    EXPECT_TRUE(queue->cancel(timer));
    EXPECT_EQ(held.use_count(), 1) << "the block is destroyed by whoever cancels it";
    EXPECT_FALSE(queue->cancel(timer));
    EXPECT_FALSE(queue->cancel(0));

    std::atomic<bool> due = false;
    std::atomic<bool> own = true;
    queue->async([&] { // a timer that is due, but whose turn has not come
        const auto second = queue->after(0ms, [&] { note(9); });
        due = queue->cancel(second);
        const auto third = std::make_shared<platform::TimerId>();
        *third = queue->after(0ms, [&, third] {
            own = queue->cancel(*third);
            note(1);
        });
    });
    EXPECT_THAT(notes(1), ElementsAre(1));
    EXPECT_TRUE(due);
    EXPECT_FALSE(own) << "a block that has started cannot be taken back";
}

TEST_P(QueueConformance, BlocksOutliveTheirQueueAndAreDestroyedAfterTheyRan) {
    const auto held = std::make_shared<int>(0);
    std::atomic<long> heldByLater = 0;
    auto queue = make();
    queue->after(5ms, [held, this] { note(1); });
    queue->after(10ms, [&, weak = std::weak_ptr(held)] {
        heldByLater = weak.use_count();
        note(2);
    });
    queue.reset();
    EXPECT_THAT(notes(2), ElementsAre(1, 2));
    EXPECT_EQ(heldByLater, 1) << "only the test still holds it";
}

TEST_P(QueueConformance, ASerialQueueNeverRunsTwoBlocksAtOnceWhoeverPosts) {
    constexpr int posters = 8;
    constexpr int each = 500;
    const auto queue = make();
    const auto concurrent = make(platform::QueueKind::concurrent);
    std::array<int, posters> last{};
    int inside = 0; // on purpose neither atomic nor locked: the queue is the lock
    bool ordered = true;
    std::atomic<int> done = 0;
    std::vector<std::thread> threads;
    for (int poster = 0; poster < posters; ++poster) {
        threads.emplace_back([&, poster] {
            for (int i = 1; i <= each; ++i) {
                queue->async([&, poster, i] {
                    ordered = ordered && ++inside == 1 && last.at(static_cast<std::size_t>(poster)) == i - 1;
                    last.at(static_cast<std::size_t>(poster)) = i;
                    --inside;
                    ++done;
                });
                queue->cancel(queue->after(1ms, [] {}));
                concurrent->async([&] { ++done; });
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    ASSERT_TRUE(port->until([&] { return done == 2 * posters * each; }));
    EXPECT_TRUE(ordered);
}

TEST_P(QueueConformance, TheMainQueueKnowsItsThread) {
    auto& main = port->mainQueue();
    std::atomic<int> inside = -1;
    main.async([&] { inside = main.isCurrent() ? 1 : 0; });
    ASSERT_TRUE(port->until([&] { return inside != -1; }));
    EXPECT_EQ(inside, 1);
    bool elsewhere = true;
    std::thread([&] { elsewhere = main.isCurrent(); }).join();
    EXPECT_FALSE(elsewhere);
}

INSTANTIATE_TEST_SUITE_P(Ports, QueueConformance, ::testing::ValuesIn(portsUnderTest()), PortTest::name);

} // namespace

std::vector<PortUnderTest>& portsUnderTest() {
    static std::vector<PortUnderTest> ports;
    return ports;
}

} // namespace zentavo::tests
