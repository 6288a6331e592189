#pragma once

#include <exception>
#include <functional>
#include <string>
#include <utility>

#include "zentavo/foundation/Export.h"

namespace zentavo {

/// A programming error that `fatalError` found: what, and where in the SDK.
struct Fault {
    std::string message;
    std::string file;
    unsigned line = 0;
    /// The entry point that was left because of it ("track", "completion"); empty under `FaultPolicy::stop`.
    std::string entryPoint;
};

enum class FaultPolicy {
    /// Write the fault to standard error and stop the process. The default.
    stop,
    /// Give up the operation, tell the system log and the host's handler, and go on with everything else.
    contain,
};

/// Called under `FaultPolicy::contain`, on the thread on which the fault was found, with no lock held.
using FaultHandler = std::function<void(const Fault&)>;
/// Where contained faults are written besides; the SDK connects it to the system log.
using FaultLog = std::function<void(const std::string& line)>;

/// All three are process-wide and may be called at any time on any thread.
ZENTAVO_EXPORT void setFaultPolicy(FaultPolicy policy, FaultHandler handler = nullptr);
ZENTAVO_EXPORT FaultPolicy faultPolicy() noexcept;
ZENTAVO_EXPORT void setFaultLog(FaultLog log);

/// For faults in what the SDK itself must supply. Never returns: stops the process, or unwinds to the entry point.
/// `file` and `line` name the caller by themselves (clang 14 has no std::source_location).
[[noreturn]] ZENTAVO_EXPORT void fatalError(std::string message, const char* file = __builtin_FILE(),
                                            unsigned line = __builtin_LINE());

namespace detail {
/// What travels from `fatalError` to the entry point; nothing else may throw or catch it.
struct ContainedFault {
    Fault fault;
};
/// Reports what `current` holds: a contained fault, or a foreign exception, which counts as a fault.
ZENTAVO_EXPORT void reportFault(const char* entryPoint, std::exception_ptr current) noexcept;
} // namespace detail

/// Runs `body` as one of the SDK's entry points: a public call, a completion, a block on a queue. Whatever `body`
/// throws ends here. Returns what `body` returns, or `otherwise` when it was left by a fault.
template <class Body, class Otherwise>
auto entryPoint(const char* name, Body&& body, Otherwise&& otherwise) -> decltype(body()) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        detail::reportFault(name, std::current_exception());
        return std::forward<Otherwise>(otherwise);
    }
}
template <class Body>
void entryPoint(const char* name, Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        detail::reportFault(name, std::current_exception());
    }
}

} // namespace zentavo
