#include "ports/linux/WorkerThread.h"

#include <algorithm>

namespace zentavo::linux_port {

using platform::Block;
using platform::TimerId;
using std::chrono::nanoseconds;

namespace {
/// A burst may leave room for this many blocks behind; more is given back.
constexpr std::size_t keptCapacity = 1024;
/// Longer delays count as this one: adding them to the clock must not overflow.
constexpr nanoseconds longestDelay = std::chrono::hours(24 * 365 * 100);
} // namespace

WorkerThread::WorkerThread() : thread_("zentavo-worker") {}

WorkerThread::~WorkerThread() {
    end();
    join(std::chrono::hours(1));
}

void WorkerThread::async(Block block) {
    if (ended_) {
        return;
    }
    MutexLock lock(mutex_);
    const bool asleep = makeReady(std::move(block));
    lock.unlock();
    if (asleep) {
        wake_.notify_one();
    }
}

TimerId WorkerThread::after(nanoseconds delay, Block block) {
    if (ended_) {
        return 0;
    }
    bool asleep = false;
    MutexLock lock(mutex_);
    const auto id = ++lastTimer_;
    if (delay <= nanoseconds(0)) {
        timers_.emplace(id, Timer{{}, std::move(block)});
        asleep = makeReady([this, id] { runTimer(id); });
    } else {
        const auto due = Clock::now() + std::min(delay, longestDelay);
        timers_.emplace(id, Timer{due, std::move(block)});
        const auto place = schedule_.emplace(due, id).first;
        if (place == schedule_.begin()) {
            asleep = makeReady(nullptr); // nothing to run, but an earlier moment to wake at
        }
    }
    lock.unlock();
    if (asleep) {
        wake_.notify_one();
    }
    return id;
}

bool WorkerThread::cancel(TimerId timer) {
    if (ended_) {
        return false;
    }
    Block dropped; // destroyed after the lock is gone
    MutexLock lock(mutex_);
    const auto found = timers_.find(timer);
    if (found == timers_.end()) {
        return false;
    }
    schedule_.erase({found->second.due, timer});
    dropped = std::move(found->second.block);
    timers_.erase(found);
    return true;
}

bool WorkerThread::makeReady(Block block) {
    if (block) {
        ready_.push_back(std::move(block));
    }
    if (!started_) {
        started_ = thread_.start([this] { run(); });
        return false;
    }
    return std::exchange(asleep_, false);
}

void WorkerThread::takeDueTimers() {
    if (schedule_.empty()) {
        return;
    }
    const auto now = Clock::now();
    while (!schedule_.empty() && schedule_.begin()->first <= now) {
        ready_.push_back([this, id = schedule_.begin()->second] { runTimer(id); });
        schedule_.erase(schedule_.begin());
    }
}

void WorkerThread::runTimer(TimerId id) {
    MutexLock lock(mutex_);
    auto timer = timers_.extract(id);
    lock.unlock();
    if (timer) {
        timer.mapped().block();
    }
}

void WorkerThread::run() {
    MutexLock lock(mutex_);
    while (!ended_) {
        takeDueTimers();
        if (ready_.empty()) {
            asleep_ = true;
            if (schedule_.empty()) {
                wake_.wait(lock);
            } else {
                const auto due = schedule_.begin()->first; // the entry may be cancelled meanwhile
                wake_.wait_until(lock, due);
            }
            asleep_ = false;
            continue;
        }
        running_.swap(ready_);
        lock.unlock();
        for (auto& block : running_) {
            if (ended_) {
                return;
            }
            block();
            block = nullptr;
        }
        running_.clear();
        if (running_.capacity() > keptCapacity) {
            running_ = {};
        }
        lock.lock();
    }
}

void WorkerThread::end() {
    if (ended_) {
        return;
    }
    MutexLock lock(mutex_);
    ended_ = true;
    lock.unlock();
    wake_.notify_all();
}

void WorkerThread::join(std::chrono::milliseconds bound) {
    if (!isCurrent()) {
        thread_.join(bound);
    }
}

void WorkerThread::forkedAway() noexcept {
    if (thread_.exists()) {
        thread_.forget();
        ended_ = true;
    }
}

} // namespace zentavo::linux_port
