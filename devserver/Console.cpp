#include "devserver/Console.h"

#include <poll.h>
#include <unistd.h>

#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

/// A pipe that says it is ready takes at least this much without blocking.
constexpr std::size_t longestLine = 4'000;

bool isReady() {
    pollfd entry{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&entry, 1, 0) == 1 && (entry.revents & POLLOUT) != 0;
}

} // namespace

std::string Console::line(const LoggedRequest& request) {
    std::string text = utcTimestamp(request.time).substr(11, 12) + "  #" + std::to_string(request.number) + "  " +
                       request.request.method + " " + request.request.path + "  " +
                       (request.status ? std::to_string(*request.status) : "no answer");
    const auto add = [&](std::string_view before, const std::string& what) {
        if (!what.empty()) {
            text.append(before).append(what);
        }
    };
    add("  ", request.findings.event);
    add("  fault ", request.fault);
    for (const std::string& problem : request.findings.problems.list()) {
        add("  ! ", problem);
    }
    return utf8Text(oneLine(text).substr(0, longestLine));
}

void Console::print(const LoggedRequest& request) {
    std::string text = line(request);
    MutexLock lock(mutex_);
    if (!isReady()) {
        ++left_;
        return;
    }
    if (left_ > 0) {
        text += "  (" + std::to_string(left_) + " lines left out before this one)";
        left_ = 0;
    }
    text += '\n';
    if (::write(STDOUT_FILENO, text.data(), text.size()) < 0) {
        ++left_;
    }
}

} // namespace zentavo::devserver
