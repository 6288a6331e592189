#include "ports/linux/SyslogSystemLog.h"

#include <set>

#include <syslog.h>

#include "ports/linux/BrokenPipeGuard.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/SingleLine.h"

namespace zentavo::linux_port {
namespace {

constexpr std::size_t maximumBytes = 4096;

int priorityOf(platform::LogLevel level) {
    switch (level) {
    case platform::LogLevel::info:
        return LOG_INFO;
    case platform::LogLevel::warning:
        return LOG_WARNING;
    case platform::LogLevel::error:
        break;
    }
    return LOG_ERR;
}

/// `text` at an address that stays good until the process ends: syslog keeps the pointer, also beyond our objects.
const char* immortal(const std::string& text) {
    static Mutex& mutex = *new Mutex;
    static std::set<std::string>& texts = *new std::set<std::string>;
    MutexLock lock(mutex);
    return texts.insert(text).first->c_str();
}

} // namespace

void SyslogSystemLog::open() { ::openlog(immortal(ident_), LOG_PERROR | LOG_PID, LOG_USER); }

void SyslogSystemLog::write(platform::LogLevel level, std::string_view message) {
    std::call_once(opened_, [this] { open(); });
    std::string line(message.substr(0, maximumBytes));
    makeSingleLine(line);
    const BrokenPipeGuard guard;
    ::syslog(priorityOf(level), "%s", line.c_str());
}

} // namespace zentavo::linux_port
