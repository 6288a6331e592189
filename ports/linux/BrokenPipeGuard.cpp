#include "ports/linux/BrokenPipeGuard.h"

#include <cerrno>
#include <ctime>

namespace zentavo::linux_port {

BrokenPipeGuard::BrokenPipeGuard() noexcept {
    sigset_t waiting{};
    sigpending(&waiting);
    wasWaiting_ = sigismember(&waiting, SIGPIPE) == 1; // then it is blocked, and no second one is kept
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
}

BrokenPipeGuard::~BrokenPipeGuard() {
    const int reason = errno;
    const timespec atOnce{};
    while (!wasWaiting_ && sigtimedwait(&pipe_, nullptr, &atOnce) == -1 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = reason;
}

} // namespace zentavo::linux_port
