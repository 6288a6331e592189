#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// A mutex that clang's thread-safety analysis can follow (-Wthread-safety); plain std::mutex underneath.
#if defined(__clang__)
#define ZENTAVO_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ZENTAVO_THREAD_ANNOTATION(x)
#endif

#define ZENTAVO_GUARDED_BY(mutex) ZENTAVO_THREAD_ANNOTATION(guarded_by(mutex))
#define ZENTAVO_REQUIRES(...) ZENTAVO_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ZENTAVO_EXCLUDES(...) ZENTAVO_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define ZENTAVO_ACQUIRE(...) ZENTAVO_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ZENTAVO_RELEASE(...) ZENTAVO_THREAD_ANNOTATION(release_capability(__VA_ARGS__))

namespace zentavo {

class ZENTAVO_THREAD_ANNOTATION(capability("mutex")) Mutex {
public:
    void lock() ZENTAVO_ACQUIRE() { mutex_.lock(); }
    void unlock() ZENTAVO_RELEASE() { mutex_.unlock(); }

private:
    friend class ConditionVariable;
    std::mutex mutex_;
};

/// Holds a `Mutex` for a scope. `unlock` and `lock` let go of it in between.
class ZENTAVO_THREAD_ANNOTATION(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex& mutex) ZENTAVO_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() ZENTAVO_RELEASE() {
        if (held_) {
            mutex_.unlock();
        }
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    void unlock() ZENTAVO_RELEASE() {
        held_ = false;
        mutex_.unlock();
    }
    void lock() ZENTAVO_ACQUIRE() {
        mutex_.lock();
        held_ = true;
    }

private:
    friend class ConditionVariable;
    Mutex& mutex_;
    bool held_ = true;
};

/// std::condition_variable for `Mutex`. Waits may end early, as everywhere: ask again in a loop. Notify after letting go
/// of the mutex, or who is woken goes to sleep again at once.
class ConditionVariable {
public:
    void notify_one() noexcept { condition_.notify_one(); }
    void notify_all() noexcept { condition_.notify_all(); }

    void wait(MutexLock& lock) {
        Borrowed borrowed(lock);
        condition_.wait(borrowed.native);
    }
    template <class Clock, class Duration>
    std::cv_status wait_until(MutexLock& lock, const std::chrono::time_point<Clock, Duration>& moment) {
        Borrowed borrowed(lock);
        return condition_.wait_until(borrowed.native, moment);
    }

private:
    /// The lock in the form that std::condition_variable takes, for the time of a wait.
    struct Borrowed {
        explicit Borrowed(MutexLock& lock) : native(lock.mutex_.mutex_, std::adopt_lock) {}
        ~Borrowed() { native.release(); }
        Borrowed(const Borrowed&) = delete;
        Borrowed& operator=(const Borrowed&) = delete;
        std::unique_lock<std::mutex> native;
    };

    std::condition_variable condition_;
};

} // namespace zentavo
