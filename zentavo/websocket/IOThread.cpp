#include "zentavo/websocket/IOThread.h"

#include <chrono>
#include <cstdlib>
#include <thread>

#include <asio/detail/signal_blocker.hpp>
#include <asio/executor_work_guard.hpp>
#include <openssl/crypto.h>

#include "zentavo/foundation/Mutex.h"

namespace zentavo::websocket {
namespace {

thread_local bool onIOThread = false;

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

bool IOThread::isCurrent() noexcept { return onIOThread; }

IOThread::IOThread() {
    end();
    // What is registered first is undone last: OpenSSL must outlive the thread, which may use it. With no option it
    // registers nothing; this one does nothing else, where loading its strings would touch more than a megabyte.
    OPENSSL_init_crypto(OPENSSL_INIT_ATFORK, nullptr);
    const asio::detail::signal_blocker blocked;
    std::thread([this] {
        onIOThread = true;
        const auto work = asio::make_work_guard(context_);
        context_.run();
        OPENSSL_thread_stop();
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
