#include "ports/linux/ProcessThreads.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include <pthread.h>

namespace zentavo::linux_port {

namespace {
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// What the process may take to exit.
constexpr milliseconds ending{1000};

/// How long the host's block that is running on the worker may hold up the end.
constexpr milliseconds blockEnding{60};
/// The network thread waits for nothing but its wake-up, so it ends at once; only a machine that gives it no processor or
/// a host's queue that does not return makes this take long. It should be gone before libraries are torn down, so it gets
/// what is left of the ending, and this much where nothing is left.
constexpr milliseconds networkEnding{50};

milliseconds timeUntil(Clock::time_point moment) {
    return std::max(milliseconds(0), std::chrono::duration_cast<milliseconds>(moment - Clock::now()));
}
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
    const auto deadline = Clock::now() + ending;
    threads.worker_.end();
    threads.network_.drain(grace);
    threads.network_.end(std::max(timeUntil(deadline), networkEnding));
    threads.worker_.join(std::min(timeUntil(deadline), blockEnding));
}

void ProcessThreads::forgetThreads() noexcept {
    shared().worker_.forkedAway();
    shared().network_.forkedAway();
}

} // namespace zentavo::linux_port
