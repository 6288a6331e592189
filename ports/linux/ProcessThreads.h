#pragma once

#include <chrono>

#include "ports/linux/CurlNetworkThread.h"
#include "ports/linux/WorkerThread.h"

namespace zentavo::linux_port {

/// The worker and the network thread that all platforms of this process share, and how they end with it.
///
/// When the process exits (return from main, `exit`), no further block starts on the worker, so no code of the host runs
/// beside its own static destructors. Requests that have been handed over get up to `grace` to leave. Then both threads
/// stop. Whoever calls later finds live objects that drop what they are given: nothing here is ever destroyed.
/// The child of a fork has neither thread; where they had started before the fork, it drops everything too.
class ProcessThreads {
public:
    /// Together with stopping the threads this stays within the second that the process may take to exit.
    static constexpr std::chrono::milliseconds grace{850};

    static ProcessThreads& shared();

    WorkerThread& worker() { return worker_; }
    CurlNetworkThread& network() { return network_; }

private:
    ProcessThreads();

    static void endWithProcess();
    static void watchExit();
    static void forgetThreads() noexcept;

    WorkerThread worker_;
    CurlNetworkThread network_;
};

} // namespace zentavo::linux_port
