#include "devserver/SerialQueue.h"

#include <algorithm>

namespace zentavo::devserver {

SerialQueue::SerialQueue() : thread_([this] { run(); }) {}

SerialQueue::~SerialQueue() { stop(); }

void SerialQueue::async(platform::Block block) { after(std::chrono::nanoseconds(0), std::move(block)); }

platform::TimerId SerialQueue::after(std::chrono::nanoseconds delay, platform::Block block) {
    MutexLock lock(mutex_);
    if (stopped_) {
        return 0;
    }
    const platform::TimerId timer = ++last_;
    const auto due = Clock::now() + std::max(delay, std::chrono::nanoseconds(0));
    blocks_.emplace(std::pair(due, timer), std::move(block));
    lock.unlock();
    changed_.notify_one();
    return timer;
}

bool SerialQueue::cancel(platform::TimerId timer) {
    platform::Block block; // destroyed after the lock is let go
    MutexLock lock(mutex_);
    const auto at = std::ranges::find_if(blocks_, [timer](const auto& each) { return each.first.second == timer; });
    if (at == blocks_.end()) {
        return false;
    }
    block = std::move(at->second);
    blocks_.erase(at);
    lock.unlock();
    return true;
}

void SerialQueue::stop() {
    decltype(blocks_) dropped;
    {
        MutexLock lock(mutex_);
        stopped_ = true;
        dropped.swap(blocks_);
    }
    changed_.notify_one();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void SerialQueue::run() {
    MutexLock lock(mutex_);
    while (!stopped_) {
        if (blocks_.empty()) {
            changed_.wait(lock);
        } else if (const auto due = blocks_.begin()->first.first; due > Clock::now()) {
            changed_.wait_until(lock, due);
        } else {
            platform::Block block = std::move(blocks_.begin()->second);
            blocks_.erase(blocks_.begin());
            lock.unlock();
            block();
            block = nullptr;
            lock.lock();
        }
    }
}

} // namespace zentavo::devserver
