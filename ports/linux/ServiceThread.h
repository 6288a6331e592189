#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include <pthread.h>

namespace zentavo::linux_port {

/// A thread of ours inside the host's process. It takes none of the host's signals and shows its name in debuggers.
/// Unlike std::thread it can be waited for with a bound. `start` and `join` exclude each other: the owner sees to that.
class ServiceThread {
public:
    /// `name` has at most 15 characters.
    explicit ServiceThread(const char* name) : name_(name) {}
    ServiceThread(const ServiceThread&) = delete;
    ServiceThread& operator=(const ServiceThread&) = delete;

    /// Runs `body` on a new thread; at most once. False when the system gives no thread: it may be tried again.
    bool start(std::function<void()> body);
    /// Whether there is a thread that `join` would wait for. Any thread.
    bool exists() const noexcept { return exists_; }
    /// Whether the calling thread is this one. Any thread.
    bool isCurrent() const noexcept { return id_.load() == std::this_thread::get_id(); }
    /// Waits until `body` has returned, at most `bound`. True when it has, and when there never was a thread. After
    /// false the thread is left to itself. Not on the thread itself.
    bool join(std::chrono::milliseconds bound);
    /// In the child of a fork: the thread is the parent's only.
    void forget() noexcept { exists_ = false; }

private:
    static void* run(void* self);

    const char* const name_;
    std::function<void()> body_;
    std::atomic<std::thread::id> id_{};
    pthread_t thread_{};
    std::atomic<bool> exists_ = false;
};

} // namespace zentavo::linux_port
