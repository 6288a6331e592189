#include "ports/linux/LinuxClock.h"

#include <ctime>

namespace zentavo::linux_port {

platform::TimePoint LinuxClock::now() const { return std::chrono::system_clock::now(); }

std::chrono::nanoseconds LinuxClock::steady() const { return std::chrono::steady_clock::now().time_since_epoch(); }

LocalTime LinuxClock::local(platform::TimePoint moment) const {
    const std::time_t seconds = std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch().count();
    std::tm parts{};
    // localtime_r itself looks at the zone only once in a process.
    ::tzset();
    if (::localtime_r(&seconds, &parts) == nullptr) {
        return {};
    }
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}

} // namespace zentavo::linux_port
