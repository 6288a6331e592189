#pragma once

#include <cstdint>

#include <sys/eventfd.h>
#include <unistd.h>

namespace zentavo::linux_port {

/// Ends another thread's wait for descriptors. libcurl's own means is a pair of sockets: that costs its caller, which is
/// the host's thread, twice as much.
class WakeUp {
public:
    WakeUp() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    ~WakeUp() {
        if (works()) {
            ::close(descriptor_);
        }
    }
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    /// False when the process had no descriptor left: whoever waits has to look by itself now and then.
    bool works() const noexcept { return descriptor_ >= 0; }
    /// Readable from `signal` to `clear`.
    int descriptor() const noexcept { return descriptor_; }
    /// Any thread.
    void signal() noexcept {
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(descriptor_, &one, sizeof one);
    }
    void clear() noexcept {
        std::uint64_t count = 0;
        [[maybe_unused]] const auto taken = ::read(descriptor_, &count, sizeof count);
    }

private:
    const int descriptor_;
};

} // namespace zentavo::linux_port
