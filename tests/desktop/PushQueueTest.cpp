// Pushes on their way to the notification centre: order, time and what goes wrong. Extensions work on real threads, time
// is the test's.

#include "ports/desktop/PushQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/MemoryPlatform.h"
#include "tests/desktop/Awaited.h"

namespace zentavo::tests {
namespace {

using desktop::PushMessage;
using desktop::PushQueue;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::chrono_literals;

/// An extension in the test's hands. "quick" pushes are rewritten at once, "slow" ones when the test lets them, or when
/// their time is over; "silent" ones come back with nothing, "lost" ones only when the test ends.
class Extension final : public platform::NotificationServiceExtension {
public:
    struct Stage {
        Awaited<std::string> begun;
        Awaited<bool> expired;
        Mutex mutex;
        ConditionVariable changed;
        std::string released ZENTAVO_GUARDED_BY(mutex);

        void release(const std::string& body) {
            MutexLock lock(mutex);
            released += body + ";";
            lock.unlock();
            changed.notify_all();
        }
    };

    explicit Extension(std::shared_ptr<Stage> stage) : stage_(std::move(stage)) {}

    void didReceive(platform::NotificationRequest request, ContentHandler handler) override {
        const std::string body = request.content.body;
        platform::NotificationContent content = std::move(request.content);
        content.title = "rewritten";
        stage_->begun.put(body);
        if (body.starts_with("slow") || body.starts_with("lost")) {
            MutexLock lock(stage_->mutex);
            while (stage_->released.find(body + ";") == std::string::npos && (!expired_ || body.starts_with("lost"))) {
                stage_->changed.wait(lock);
            }
        }
        if (!body.starts_with("silent") && !body.starts_with("lost")) {
            handler(std::move(content));
        }
    }
    void serviceExtensionTimeWillExpire() override {
        MutexLock lock(stage_->mutex);
        expired_ = true;
        lock.unlock();
        stage_->changed.notify_all();
        stage_->expired.put(true);
    }

private:
    const std::shared_ptr<Stage> stage_;
    bool expired_ ZENTAVO_GUARDED_BY(stage_->mutex) = false;
};

class PushQueueTest : public ::testing::Test {
protected:
    PushQueueTest() {
        queue = std::make_unique<PushQueue>(memory.platform(), memory.queues->make("push", platform::QueueKind::serial),
                                            [this] { return std::make_shared<Extension>(stage); });
    }
    ~PushQueueTest() override {
        queue.reset();
        settle();
    }

    static PushMessage push(const std::string& body, std::optional<std::int64_t> badge = {}) {
        PushMessage message;
        message.content.body = body;
        message.content.badge = badge;
        message.alert = true;
        message.mutableContent = body.find("plain") == std::string::npos;
        return message;
    }
    void settle() { memory.queues->runUntilIdle(); }
    /// Lets what extensions hand back arrive, until that many notifications are there.
    void settleUntilShown(std::size_t count) {
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (bodies().size() < count && std::chrono::steady_clock::now() < end) {
            settle();
            std::this_thread::yield();
        }
        EXPECT_EQ(bodies().size(), count);
    }
    /// The push that an extension is given next; what earlier ones hand back may be what lets it start.
    std::string nextBegun() {
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (stage->begun.empty() && std::chrono::steady_clock::now() < end) {
            settle();
            std::this_thread::yield();
        }
        return stage->begun.next();
    }
    void settleUntilIdle() {
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (queue->busy() && std::chrono::steady_clock::now() < end) {
            settle();
            std::this_thread::yield();
        }
        EXPECT_FALSE(queue->busy());
    }
    /// "*" marks what an extension has rewritten.
    std::vector<std::string> bodies() const {
        std::vector<std::string> found;
        for (const auto& each : memory.userNotifications->shown()) {
            const auto& content = each.request.content;
            found.push_back(content.body + (content.title == "rewritten" ? "*" : ""));
        }
        return found;
    }

    testing::MemoryPlatform memory;
    const std::shared_ptr<Extension::Stage> stage = std::make_shared<Extension::Stage>();
    std::unique_ptr<PushQueue> queue;
};

TEST_F(PushQueueTest, InOrderOfArrivalAndRewrittenOnlyWhereAsked) {
    PushMessage silent = push("unseen", 7);
    silent.alert = false;
    queue->add(push("slow 1"));
    queue->add(push("plain 2"));
    queue->add(std::move(silent));
    queue->add(push("quick 3"));
    settle();
    EXPECT_THAT(bodies(), IsEmpty());
    EXPECT_EQ(memory.userNotifications->badgeCount(), 0);
    stage->release("slow 1");
    settleUntilIdle();
    EXPECT_THAT(bodies(), ElementsAre("slow 1*", "plain 2", "quick 3*"));
    EXPECT_EQ(memory.userNotifications->badgeCount(), 7);
    EXPECT_EQ(memory.userNotifications->shown()[0].request.identifier.size(), 36U);
    EXPECT_EQ(memory.queues->timers(), 0U);
}

TEST_F(PushQueueTest, ASlowOneIsOvertakenAndLeavesTheNumberAlone) {
    queue->add(push("slow 1", 1));
    queue->add(push("quick 2", 2));
    memory.queues->advance(1'999ms);
    EXPECT_THAT(bodies(), IsEmpty());
    memory.queues->advance(1ms);
    settleUntilShown(1);
    EXPECT_THAT(bodies(), ElementsAre("quick 2*"));
    EXPECT_EQ(memory.userNotifications->badgeCount(), 2);
    stage->release("slow 1");
    settleUntilIdle();
    EXPECT_THAT(bodies(), ElementsAre("quick 2*", "slow 1*"));
    EXPECT_EQ(memory.userNotifications->badgeCount(), 2);
}

TEST_F(PushQueueTest, NoMoreThanFourAreRewrittenAtOnce) {
    for (int i = 1; i <= 6; ++i) {
        queue->add(push("slow " + std::to_string(i)));
    }
    memory.queues->advance(20s);
    for (int i = 1; i <= 4; ++i) {
        stage->begun.next();
    }
    EXPECT_TRUE(stage->begun.empty());
    stage->release("slow 2");
    settleUntilShown(1);
    EXPECT_EQ(nextBegun(), "slow 5");
    for (const int i : {1, 3, 4, 5, 6}) {
        stage->release("slow " + std::to_string(i));
    }
    settleUntilIdle();
    EXPECT_EQ(bodies().size(), 6U);
}

TEST_F(PushQueueTest, AfterTwentyFiveSecondsItIsShownWithWhatThereIs) {
    queue->add(push("slow 1"));
    memory.queues->advance(24'999ms);
    EXPECT_TRUE(stage->expired.empty());
    memory.queues->advance(1ms);
    stage->expired.next();
    settleUntilIdle();
    EXPECT_THAT(bodies(), ElementsAre("slow 1*"));
    EXPECT_TRUE(stage->expired.empty());
}

TEST_F(PushQueueTest, ExtensionsThatBreakTheirPromiseLoseNothing) {
    queue->add(push("silent 1"));
    queue->add(push("lost 2"));
    settleUntilShown(1);
    EXPECT_THAT(bodies(), ElementsAre("silent 1"));
    stage->begun.next();
    stage->begun.next();
    memory.queues->advance(29'999ms);
    EXPECT_EQ(bodies().size(), 1U);
    EXPECT_TRUE(queue->busy());
    memory.queues->advance(1ms);
    EXPECT_THAT(bodies(), ElementsAre("silent 1", "lost 2"));
    EXPECT_FALSE(queue->busy());
    stage->release("lost 2"); // its thread ends, and finds nobody
}

TEST_F(PushQueueTest, WithoutAnExtensionItIsShownAsItCame) {
    PushQueue bare(memory.platform(), memory.queues->make("push", platform::QueueKind::serial),
                   [] { return std::shared_ptr<platform::NotificationServiceExtension>(); });
    bare.add(push("quick 1"));
    settle();
    EXPECT_THAT(bodies(), ElementsAre("quick 1"));
    EXPECT_FALSE(bare.busy());
}

TEST_F(PushQueueTest, OfTooManyTheOldestAreShownAsTheyCame) {
    queue->add(push("slow 0"));
    for (std::size_t i = 1; i <= PushQueue::maximumWaiting + 2; ++i) {
        queue->add(push("quick " + std::to_string(i)));
    }
    settle();
    EXPECT_THAT(bodies(), ElementsAre("quick 1", "quick 2"));
    stage->release("slow 0");
    settleUntilIdle();
    EXPECT_EQ(bodies().size(), PushQueue::maximumWaiting + 3);
    EXPECT_EQ(bodies()[2], "slow 0*");
    EXPECT_EQ(bodies()[3], "quick 3*");
}

TEST_F(PushQueueTest, TheEndShowsAllThatThereIs) {
    queue->add(push("slow 1"));
    queue->add(push("quick 2"));
    queue->add(push("plain 3"));
    stage->begun.next();
    bool finished = false;
    queue->finish([&] { finished = true; });
    settleUntilIdle();
    settle();
    EXPECT_TRUE(finished);
    EXPECT_THAT(bodies(), ElementsAre("quick 2", "plain 3", "slow 1*"));

    // Also where an extension does not care.
    bool again = false;
    queue->add(push("lost 4"));
    stage->begun.next();
    queue->finish([&] { again = true; });
    memory.queues->advance(1s);
    EXPECT_TRUE(again);
    EXPECT_EQ(bodies().back(), "lost 4");
    stage->release("lost 4");
}

} // namespace
} // namespace zentavo::tests
