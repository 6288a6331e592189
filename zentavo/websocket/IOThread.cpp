#include "zentavo/websocket/IOThread.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include <asio/detail/signal_blocker.hpp>
#include <asio/executor_work_guard.hpp>

#include "zentavo/foundation/Mutex.h"

namespace zentavo::websocket {
namespace {

thread_local bool onIOThread = false;
std::atomic<void (*)()> lastCall = nullptr;

// How long a handler may hold up the end of the process.
constexpr std::chrono::seconds patience{1};

/// Whether the thread has ended. Never destroyed, as the thread may outlive every static object.
struct End {
    Mutex mutex;
    ConditionVariable told;
    bool ended ZENTAVO_GUARDED_BY(mutex) = false;
};
End& end() {
    static End& end = *new End;
    return end;
}

} // namespace

IOThread& IOThread::shared() {
    static IOThread& thread = *new IOThread;
    return thread;
}

void IOThread::stopAtExit(void (*last)()) {
    lastCall.store(last);
    std::atexit(&IOThread::stop);
}

bool IOThread::isCurrent() noexcept { return onIOThread; }

IOThread::IOThread() {
    end();
    const asio::detail::signal_blocker blocked;
    std::thread([this] {
        onIOThread = true;
        const auto work = asio::make_work_guard(context_);
        context_.run();
        if (const auto last = lastCall.load()) {
            last();
        }
        MutexLock lock(end().mutex);
        end().ended = true;
        end().told.notify_all();
    }).detach();
    std::atexit(&IOThread::stop);
}

void IOThread::stop() {
    shared().context_.stop();
    if (isCurrent()) {
        return; // a handler called exit
    }
    const auto until = std::chrono::steady_clock::now() + patience;
    MutexLock lock(end().mutex);
    while (!end().ended && end().told.wait_until(lock, until) != std::cv_status::timeout) {
    }
}

} // namespace zentavo::websocket
