#pragma once

#include <chrono>
#include <deque>
#include <utility>

#include <gtest/gtest.h>

#include "zentavo/foundation/Mutex.h"

namespace zentavo::tests {

/// Values that arrive on another thread, for the test's own to wait for, oldest first.
template <class T>
class Awaited {
public:
    void put(T value) {
        const MutexLock lock(mutex_);
        values_.push_back(std::move(value));
        changed_.notify_all(); // under the lock: who has seen the value may end this object
    }
    /// The next one; a test that waits in vain fails.
    T next() {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        MutexLock lock(mutex_);
        while (values_.empty()) {
            if (changed_.wait_until(lock, end) == std::cv_status::timeout && values_.empty()) {
                ADD_FAILURE() << "nothing came";
                return T();
            }
        }
        T value = std::move(values_.front());
        values_.pop_front();
        return value;
    }
    bool empty() const {
        MutexLock lock(mutex_);
        return values_.empty();
    }

private:
    mutable Mutex mutex_;
    ConditionVariable changed_;
    std::deque<T> values_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::tests
