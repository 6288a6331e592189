#pragma once

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
    Mutex& mutex_;
    bool held_ = true;
};

/// Works with `Mutex` through `MutexLock` (which is a BasicLockable).
using ConditionVariable = std::condition_variable_any;

} // namespace zentavo
