#pragma once

#include <cstdint>

#include <sys/types.h>

#include "support/Collector.h"

namespace bench {

/// A collector in a process of its own, so that its work does not count for the client's. Make it while the calling
/// process has one thread only (it forks). The child ends with this object, with its parent, or after two minutes,
/// whichever comes first.
class CollectorProcess {
public:
    explicit CollectorProcess(CollectorMode mode = CollectorMode::answer);
    ~CollectorProcess();
    CollectorProcess(const CollectorProcess&) = delete;
    CollectorProcess& operator=(const CollectorProcess&) = delete;

    std::uint16_t port() const noexcept { return port_; }
    const SharedTraffic& traffic() const noexcept { return traffic_; }

private:
    SharedTraffic traffic_;
    std::uint16_t port_ = 0;
    pid_t child_ = -1;
};

} // namespace bench
