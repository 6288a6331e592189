#include "zentavo/foundation/Fault.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "zentavo/foundation/Mutex.h"

namespace zentavo {
namespace {

struct FaultSettings {
    std::atomic<FaultPolicy> policy{FaultPolicy::stop};
    Mutex mutex;
    FaultHandler handler ZENTAVO_GUARDED_BY(mutex);
    FaultLog log ZENTAVO_GUARDED_BY(mutex);
};

/// Never destroyed: a thread that is late at process exit still finds it.
FaultSettings& settings() {
    static FaultSettings& instance = *new FaultSettings;
    return instance;
}

std::string describe(const Fault& fault) {
    return fault.file.empty() ? fault.message
                              : fault.message + " (" + fault.file + ':' + std::to_string(fault.line) + ')';
}

[[noreturn]] void stop(const Fault& fault) {
    const std::string line = describe(fault) + '\n';
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
    std::abort();
}

/// The host's code may throw anything; nothing of it reaches the SDK's entry points.
template <class Callback, class Argument>
bool callSafely(const Callback& callback, const Argument& argument) noexcept {
    try {
        if (callback) {
            callback(argument);
        }
        return true;
    } catch (...) {
        return false;
    }
}

void deliver(const Fault& fault) {
    FaultHandler handler;
    FaultLog log;
    {
        MutexLock lock(settings().mutex);
        handler = settings().handler;
        log = settings().log;
    }
    callSafely(log, fault.entryPoint + ": " + describe(fault));

    // A handler that itself calls the SDK may meet the same fault again; that one is only logged, or it never ended.
    static thread_local bool handling = false;
    if (handling) {
        return;
    }
    handling = true;
    if (!callSafely(handler, fault)) {
        callSafely(log, fault.entryPoint + ": the host's fault handler threw");
    }
    handling = false;
}

} // namespace

void setFaultPolicy(FaultPolicy policy, FaultHandler handler) {
    FaultSettings& all = settings();
    {
        MutexLock lock(all.mutex);
        std::swap(all.handler, handler);
        all.policy = policy;
    }
    // The old handler, and whatever it holds, ends here, outside the lock.
}

FaultPolicy faultPolicy() noexcept { return settings().policy; }

void setFaultLog(FaultLog log) {
    MutexLock lock(settings().mutex);
    std::swap(settings().log, log);
    lock.unlock();
}

void fatalError(std::string message, const char* file, unsigned line) {
    Fault fault{std::move(message), file, line, {}};
    if (faultPolicy() == FaultPolicy::stop) {
        stop(fault);
    }
    throw detail::ContainedFault{std::move(fault)};
}

namespace detail {

void reportFault(const char* entryPoint, std::exception_ptr current) noexcept {
    try {
        Fault fault;
        bool foreign = true;
        try {
            std::rethrow_exception(std::move(current));
        } catch (const ContainedFault& contained) {
            fault = contained.fault;
            foreign = false;
        } catch (const std::exception& exception) {
            fault.message = std::string("unexpected exception: ") + exception.what();
        } catch (...) {
            fault.message = "unexpected exception of an unknown kind";
        }
        fault.entryPoint = entryPoint;
        if (foreign && faultPolicy() == FaultPolicy::stop) {
            fault.message = fault.entryPoint + ": " + fault.message;
            stop(fault);
        }
        deliver(fault);
    } catch (...) {
        // No memory is left to report with. The operation is given up all the same.
    }
}

} // namespace detail
} // namespace zentavo
