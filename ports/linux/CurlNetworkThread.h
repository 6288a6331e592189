#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ports/linux/CurlTask.h"
#include "ports/linux/CurlTransfers.h"
#include "ports/linux/ServiceThread.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo::linux_port {

/// The one thread that talks to the network, and the inbox through which others reach it. The thread starts, and libcurl
/// is loaded, with the first request. A request costs its caller a push, and a wake-up only where the thread sleeps and
/// could begin it. Any thread may call.
class CurlNetworkThread {
public:
    /// `libraryLoaded` is called once on the network thread, when libcurl and what it needs are in place.
    explicit CurlNetworkThread(std::function<void()> libraryLoaded = {});
    /// Breaks off what is under way; its completions are not called.
    ~CurlNetworkThread();

    void start(std::shared_ptr<CurlTask> task);
    void cancel(std::shared_ptr<CurlTask> task);

    /// From now on new requests are dropped. Returns when those under way are over, or after `bound`.
    void drain(std::chrono::milliseconds bound);
    /// Stops the thread, which is waited for no longer than `bound`. Nothing is cleaned up.
    void end(std::chrono::milliseconds bound);
    /// In the child of a fork. Where the thread had started it is the parent's, and the lock may be held for ever:
    /// everything is dropped.
    void forkedAway() noexcept;

private:
    void run();
    /// Passes on what came in; false when it is time to end.
    bool takeInbox();
    /// Unless something has come in, the thread counts as asleep from now on.
    bool fallAsleep();
    void over(std::size_t count);
    /// Without libcurl what has come fails. Returns when more comes, for which it is looked for again: what was missing
    /// may have been memory or a file descriptor. False when it is time to end.
    bool refuseAll(const Error& error);

    const std::function<void()> libraryLoaded_;
    std::atomic<bool> closed_ = false;
    std::unique_ptr<CurlTransfers> transfers_;     ///< set by the network thread before it first falls asleep
    std::vector<std::shared_ptr<CurlTask>> taken_; ///< the network thread's own

    Mutex mutex_;
    ConditionVariable drained_;
    ConditionVariable moreCame_; ///< while there is no libcurl to wake
    ServiceThread thread_;
    bool started_ ZENTAVO_GUARDED_BY(mutex_) = false;
    bool ended_ ZENTAVO_GUARDED_BY(mutex_) = false;
    bool asleep_ ZENTAVO_GUARDED_BY(mutex_) = false;
    /// While it sleeps: the origin whose requests need not wake it, or empty.
    std::string full_ ZENTAVO_GUARDED_BY(mutex_);
    std::size_t open_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::vector<std::shared_ptr<CurlTask>> inbox_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<std::shared_ptr<CurlTask>> cancelled_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::linux_port
