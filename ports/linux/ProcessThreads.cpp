#include "ports/linux/ProcessThreads.h"

#include <atomic>
#include <cstdlib>

#include <pthread.h>

namespace zentavo::linux_port {

namespace {
using std::chrono::milliseconds;

/// How long a thread may take to notice that it is over: the network in the middle of a turn, a host's callback.
constexpr milliseconds stopping{60};
} // namespace

ProcessThreads& ProcessThreads::shared() {
    static auto* const threads = [] {
        auto* made = new ProcessThreads; // never destroyed: late callers find it alive
        pthread_atfork(nullptr, nullptr, [] { shared().forgetThreads(); });
        watchExit();
        return made;
    }();
    return *threads;
}

// Exit handlers run in reverse order. libcurl's libraries register their own while they are loaded and initialised, so
// ours is registered once more after that: the threads must be gone before OpenSSL tidies up.
ProcessThreads::ProcessThreads() : network_(&watchExit) {}

void ProcessThreads::watchExit() { std::atexit(&endWithProcess); }

void ProcessThreads::endWithProcess() {
    static std::atomic<bool> begun = false;
    if (begun.exchange(true)) {
        return;
    }
    auto& threads = shared();
    threads.worker_.end();
    threads.network_.drain(grace);
    threads.network_.end(stopping);
    threads.worker_.join(stopping);
}

void ProcessThreads::forgetThreads() noexcept {
    shared().worker_.forkedAway();
    shared().network_.forkedAway();
}

} // namespace zentavo::linux_port
