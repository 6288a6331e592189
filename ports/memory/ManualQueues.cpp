#include "ports/memory/ManualQueues.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <thread>
#include <utility>

#include "zentavo/foundation/Fault.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo::testing {

using platform::Block;
using platform::TimerId;
using std::chrono::nanoseconds;

namespace {
/// More blocks than any test means to run: they post each other for ever.
constexpr std::size_t runawayLimit = 100'000;
} // namespace

/// What the queues share: the blocks that are ready and those that wait for their time.
class ManualQueues::Board {
    // The key orders the blocks of one moment as they were posted.
    struct Key {
        nanoseconds due;
        TimerId id;
        auto operator<=>(const Key&) const = default;
    };
    struct Entry {
        const void* queue;
        Block block;
    };

public:
    explicit Board(std::shared_ptr<ManualClock> clock) : clock_(std::move(clock)) {}

    TimerId post(const void* queue, nanoseconds delay, Block block) {
        const auto due = clock_->steady() + std::max(delay, nanoseconds(0));
        MutexLock lock(mutex_);
        if (ended_) {
            lock.unlock();
            return 0;
        }
        const Key key{due, ++lastId_};
        entries_.emplace(key, Entry{queue, std::move(block)});
        dueOf_.emplace(key.id, due);
        return key.id;
    }

    bool cancel(TimerId id) {
        Block dropped; // destroyed after the lock is gone
        MutexLock lock(mutex_);
        const auto found = dueOf_.find(id);
        if (found == dueOf_.end()) {
            return false;
        }
        auto entry = entries_.extract(Key{found->second, id});
        dueOf_.erase(found);
        dropped = std::move(entry.mapped().block);
        return true;
    }

    /// Drops what has not run, and everything posted from now on. Blocks often hold their queue: this opens the ring.
    void end() {
        std::map<Key, Entry> dropped;
        MutexLock lock(mutex_);
        ended_ = true;
        dropped.swap(entries_);
        dueOf_.clear();
        lock.unlock();
    }

    /// Runs the earliest block that is ready and not posted after `newest`.
    bool runOne(TimerId newest) {
        const auto now = clock_->steady();
        MutexLock lock(mutex_);
        auto it = entries_.begin();
        while (it != entries_.end() && it->first.due <= now && it->first.id > newest) {
            ++it;
        }
        if (it == entries_.end() || it->first.due > now) {
            return false;
        }
        auto entry = std::move(it->second);
        dueOf_.erase(it->first.id);
        entries_.erase(it);
        lock.unlock();
        const auto* outer = running_.exchange(entry.queue);
        entry.block();
        entry.block = nullptr;
        running_ = outer;
        return true;
    }

    TimerId newest() const {
        MutexLock lock(mutex_);
        return lastId_;
    }
    std::optional<nanoseconds> nextDue() const {
        MutexLock lock(mutex_);
        return entries_.empty() ? std::nullopt : std::optional(entries_.begin()->first.due);
    }
    std::size_t count(bool ready) const {
        const auto now = clock_->steady();
        MutexLock lock(mutex_);
        std::size_t result = 0;
        for (const auto& [key, entry] : entries_) {
            result += (key.due <= now) == ready ? 1 : 0;
        }
        return result;
    }
    /// The queue whose block runs now; null between blocks.
    const void* running() const { return running_; }

private:
    const std::shared_ptr<ManualClock> clock_;
    std::atomic<const void*> running_ = nullptr;
    mutable Mutex mutex_;
    bool ended_ ZENTAVO_GUARDED_BY(mutex_) = false;
    TimerId lastId_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::map<Key, Entry> entries_ ZENTAVO_GUARDED_BY(mutex_);
    std::map<TimerId, nanoseconds> dueOf_ ZENTAVO_GUARDED_BY(mutex_);
};

class ManualQueues::Queue : public platform::DispatchQueue {
public:
    explicit Queue(std::shared_ptr<Board> board) : board_(std::move(board)) {}

    void async(Block block) override { board_->post(this, nanoseconds(0), std::move(block)); }
    TimerId after(nanoseconds delay, Block block) override { return board_->post(this, delay, std::move(block)); }
    bool cancel(TimerId timer) override { return board_->cancel(timer); }

private:
    std::shared_ptr<Board> board_;
};

/// Lives on the thread that made the test's queues, and is current there unless another queue's block is running.
class ManualQueues::MainQueue : public platform::MainQueue {
public:
    explicit MainQueue(std::shared_ptr<Board> board) : board_(std::move(board)) {}

    void async(Block block) override { board_->post(this, nanoseconds(0), std::move(block)); }
    TimerId after(nanoseconds delay, Block block) override { return board_->post(this, delay, std::move(block)); }
    bool cancel(TimerId timer) override { return board_->cancel(timer); }
    bool isCurrent() const override {
        const auto* running = board_->running();
        return std::this_thread::get_id() == thread_ && (running == nullptr || running == this);
    }

private:
    std::shared_ptr<Board> board_;
    const std::thread::id thread_ = std::this_thread::get_id();
};

ManualQueues::ManualQueues(std::shared_ptr<ManualClock> clock)
    : clock_(std::move(clock)), board_(std::make_shared<Board>(clock_)),
      mainQueue_(std::make_shared<MainQueue>(board_)) {}

ManualQueues::~ManualQueues() { end(); }

void ManualQueues::end() { board_->end(); }

std::shared_ptr<platform::DispatchQueue> ManualQueues::make(std::string, platform::QueueKind) {
    return std::make_shared<Queue>(board_);
}

std::shared_ptr<platform::MainQueue> ManualQueues::mainQueue() { return mainQueue_; }

std::size_t ManualQueues::run() {
    const auto newest = board_->newest();
    std::size_t ran = 0;
    while (board_->runOne(newest)) {
        ++ran;
    }
    return ran;
}

std::size_t ManualQueues::runUntilIdle() {
    std::size_t ran = 0;
    while (board_->runOne(std::numeric_limits<TimerId>::max())) {
        if (++ran >= runawayLimit) {
            fatalError("the queues never become idle: blocks keep posting blocks");
        }
    }
    return ran;
}

std::size_t ManualQueues::advance(nanoseconds duration) {
    const auto end = clock_->steady() + duration;
    std::size_t ran = runUntilIdle();
    for (auto due = board_->nextDue(); due && *due <= end; due = board_->nextDue()) {
        clock_->advance(std::max(*due - clock_->steady(), nanoseconds(0)));
        ran += runUntilIdle();
    }
    clock_->advance(end - clock_->steady());
    return ran;
}

std::size_t ManualQueues::waiting() const { return board_->count(true); }

std::size_t ManualQueues::timers() const { return board_->count(false); }

} // namespace zentavo::testing
