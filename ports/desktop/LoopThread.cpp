#include "ports/desktop/LoopThread.h"

#include <csignal>
#include <system_error>
#include <utility>

#include <pthread.h>

namespace zentavo::desktop {

using platform::Block;

LoopThread::LoopThread(const char* name)
    : name_(name), context_(g_main_context_new()), loop_(g_main_loop_new(context_, FALSE)),
      pump_(g_source_new(pumpFunctions(), sizeof(Pump))) {
    reinterpret_cast<Pump*>(pump_)->thread = this;
    g_source_attach(pump_, context_);
}

LoopThread::~LoopThread() {
    g_source_destroy(pump_);
    g_source_unref(pump_);
    g_main_loop_unref(loop_);
    g_main_context_unref(context_);
}

void LoopThread::run(Block block) {
    MutexLock lock(mutex_);
    ready_.push_back(std::move(block));
    wake();
}

void LoopThread::run(Block block, std::chrono::milliseconds delay) {
    const gint64 due = g_get_monotonic_time() + std::chrono::microseconds(delay).count();
    MutexLock lock(mutex_);
    timers_.emplace(due, std::move(block));
    wake();
}

void LoopThread::stop() {
    stopping_ = true;
    MutexLock lock(mutex_);
    std::thread thread = std::move(thread_);
    started_ = true;
    wake();
    lock.unlock();
    if (!thread.joinable()) {
        return;
    }
    if (thread.get_id() == std::this_thread::get_id()) {
        thread.detach();
    } else {
        thread.join();
    }
}

GSourceFuncs* LoopThread::pumpFunctions() {
    static GSourceFuncs functions{nullptr,
                                  nullptr,
                                  [](GSource* source, GSourceFunc, gpointer) -> gboolean {
                                      reinterpret_cast<Pump*>(source)->thread->runWhatIsDue();
                                      return G_SOURCE_CONTINUE;
                                  },
                                  nullptr,
                                  nullptr,
                                  nullptr};
    return &functions;
}

void LoopThread::wake() {
    g_source_set_ready_time(pump_, 0);
    if (!started_) {
        start();
    }
}

void LoopThread::start() {
    started_ = true;
    // The host's signals are for the host's threads.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        thread_ = std::thread([self = shared_from_this()] { self->work(); });
        pthread_setname_np(thread_.native_handle(), name_);
    } catch (const std::system_error&) {
        // Whoever asks for something next tries again; what was asked for waits.
        started_ = false;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void LoopThread::runWhatIsDue() {
    MutexLock lock(mutex_);
    const gint64 now = g_get_monotonic_time();
    const auto waiting = timers_.upper_bound(now);
    for (auto timer = timers_.begin(); timer != waiting; ++timer) {
        ready_.push_back(std::move(timer->second));
    }
    timers_.erase(timers_.begin(), waiting);
    auto blocks = std::exchange(ready_, {});
    g_source_set_ready_time(pump_, timers_.empty() ? -1 : timers_.begin()->first);
    lock.unlock();
    for (const Block& block : blocks) {
        if (!stopping_) {
            block();
        }
    }
    // Here, since a loop that has not begun forgets that it was asked to end.
    if (stopping_) {
        g_main_loop_quit(loop_);
    }
}

void LoopThread::work() {
    g_main_context_push_thread_default(context_);
    g_main_loop_run(loop_);
    leave();
    while (g_main_context_iteration(context_, FALSE) != FALSE) {
    }
    g_main_context_pop_thread_default(context_);
}

} // namespace zentavo::desktop
