#include "ports/linux/ProcessThreads.h"

#include <atomic>
#include <cstdlib>

#include <pthread.h>

namespace zentavo::linux_port {

namespace {
using std::chrono::milliseconds;

/// How long the host's block that is running on the worker may hold up the end.
constexpr milliseconds blockEnding{60};
/// The network thread never waits for anything but its wake-up, so it ends at once; only a machine that gives it no
/// processor makes this take long. It must be gone before libraries are torn down, so it gets its time.
constexpr milliseconds networkEnding{1000};
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

// Exit handlers run in reverse order. What libcurl brings along may register handlers while it is loaded, so ours is
// registered once more after that: the threads must be gone before anything that they use is tidied up.
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
    threads.network_.end(networkEnding);
    threads.worker_.join(blockEnding);
}

void ProcessThreads::forgetThreads() noexcept {
    shared().worker_.forkedAway();
    shared().network_.forkedAway();
}

} // namespace zentavo::linux_port
