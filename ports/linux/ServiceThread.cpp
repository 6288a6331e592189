#include "ports/linux/ServiceThread.h"

#include <csignal>
#include <ctime>
#include <utility>

namespace zentavo::linux_port {

bool ServiceThread::start(std::function<void()> body) {
    body_ = std::move(body);
    // A new thread inherits the mask: the host's handlers go on running on the host's threads only.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    exists_ = pthread_create(&thread_, nullptr, &ServiceThread::run, this) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return exists_;
}

void* ServiceThread::run(void* self) {
    auto& thread = *static_cast<ServiceThread*>(self);
    pthread_setname_np(pthread_self(), thread.name_);
    thread.id_ = std::this_thread::get_id();
    thread.body_();
    return nullptr;
}

bool ServiceThread::join(std::chrono::milliseconds bound) {
    if (!exists_.exchange(false)) {
        return true;
    }
    timespec until{};
    clock_gettime(CLOCK_REALTIME, &until);
    const auto nanoseconds = until.tv_nsec + bound.count() % 1000 * 1'000'000;
    until.tv_sec += bound.count() / 1000 + nanoseconds / 1'000'000'000;
    until.tv_nsec = nanoseconds % 1'000'000'000;
    if (pthread_timedjoin_np(thread_, nullptr, &until) == 0) {
        return true;
    }
    pthread_detach(thread_);
    return false;
}

} // namespace zentavo::linux_port
