#pragma once

#include <csignal>

namespace zentavo::linux_port {

/// While it lives, what this thread writes to a pipe that nobody reads any more fails, and does not end the process: a
/// host may be told of its log's end by its own writing, not by ours. A SIGPIPE that waits already is left to the host.
class BrokenPipeGuard {
public:
    BrokenPipeGuard() noexcept;
    ~BrokenPipeGuard();
    BrokenPipeGuard(const BrokenPipeGuard&) = delete;
    BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;

private:
    sigset_t pipe_{};
    sigset_t before_{};
    bool wasWaiting_ = false;
};

} // namespace zentavo::linux_port
