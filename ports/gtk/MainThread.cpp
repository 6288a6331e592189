#include "ports/gtk/MainThread.h"

#include <atomic>
#include <memory>
#include <thread>
#include <utility>

#include <glib.h>

#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

namespace {

std::atomic<std::thread::id> mainThread{};

} // namespace

void MainThread::adopt() {
    std::thread::id none;
    mainThread.compare_exchange_strong(none, std::this_thread::get_id());
}

bool MainThread::isCurrent() noexcept { return mainThread.load() == std::this_thread::get_id(); }

void MainThread::require(const char* file, unsigned line) {
    if (!isCurrent()) {
        fatalError("a view is touched off the main thread", file, line);
    }
}

void MainThread::run(std::function<void()> block) {
    if (isCurrent()) {
        return block();
    }
    // Not g_main_context_invoke: between two turns of the loop it would run the block right here.
    auto held = std::make_unique<std::function<void()>>(std::move(block));
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            entryPoint("main queue", [&] { (*static_cast<std::function<void()>*>(data))(); });
            return G_SOURCE_REMOVE;
        },
        held.release(), [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
}

} // namespace zentavo::gtk
