#include "support/ProcessStatus.h"

#include <cstdlib>
#include <fstream>
#include <string>

#include <sys/resource.h>

namespace bench {

ProcessStatus ProcessStatus::now() {
    ProcessStatus status;
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        const auto number = [&](const char* name, std::int64_t& value) {
            if (line.starts_with(name)) {
                value = std::strtoll(line.c_str() + line.find(':') + 1, nullptr, 10);
            }
        };
        number("VmRSS:", status.residentKilobytes);
        number("RssAnon:", status.privateKilobytes);
        number("Threads:", status.threads);
    }
    return status;
}

std::int64_t processorNanoseconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto nanoseconds = [](const timeval& time) {
        return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + static_cast<std::int64_t>(time.tv_usec) * 1000;
    };
    return nanoseconds(usage.ru_utime) + nanoseconds(usage.ru_stime);
}

} // namespace bench
