#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <thread>
#include <vector>

#include <glib.h>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/DispatchQueue.h"

namespace zentavo::desktop {

/// A GLib main loop on a thread of its own, which starts with the first block. It lives until its thread has ended.
class LoopThread : public std::enable_shared_from_this<LoopThread> {
public:
    virtual ~LoopThread();
    LoopThread(const LoopThread&) = delete;
    LoopThread& operator=(const LoopThread&) = delete;

    /// Blocks run in their order. Any thread.
    void run(platform::Block block);
    void run(platform::Block block, std::chrono::milliseconds delay);
    /// No block starts any more. Waits for the one that runs, unless that is the caller. Once, any thread.
    void stop();
    bool stopping() const noexcept { return stopping_; }

protected:
    /// `name` is what debuggers show, at most 15 characters.
    explicit LoopThread(const char* name);

private:
    /// The thread's last call, after which its loop goes on until nothing is left to be done.
    virtual void leave() = 0;

    /// Hands blocks over under a lock of ours, not the library's: sanitizers see into ours alone.
    struct Pump {
        GSource base;
        LoopThread* thread;
    };
    static GSourceFuncs* pumpFunctions();
    void wake() ZENTAVO_REQUIRES(mutex_);
    void start() ZENTAVO_REQUIRES(mutex_);
    void runWhatIsDue();
    void work();

    const char* const name_;
    GMainContext* const context_;
    GMainLoop* const loop_;
    GSource* const pump_;
    std::atomic<bool> stopping_ = false;
    Mutex mutex_;
    bool started_ ZENTAVO_GUARDED_BY(mutex_) = false;
    std::thread thread_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<platform::Block> ready_ ZENTAVO_GUARDED_BY(mutex_);
    /// By when they are due, in microseconds of the monotonic clock.
    std::multimap<gint64, platform::Block> timers_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::desktop
