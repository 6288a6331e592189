#include "devserver/Lifetime.h"

#include <algorithm>
#include <array>
#include <csignal>

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zentavo::devserver {

namespace {

using std::chrono::milliseconds;

/// How often the parent is looked for.
constexpr milliseconds look{200};

bool isPipe(int descriptor) {
    struct stat facts {};
    return ::fstat(descriptor, &facts) == 0 && (S_ISFIFO(facts.st_mode) || S_ISSOCK(facts.st_mode));
}

/// Reads away what stands in standard input. False at its end.
bool drainInput() {
    std::array<char, 512> bytes;
    return ::read(STDIN_FILENO, bytes.data(), bytes.size()) > 0;
}

} // namespace

Lifetime::Lifetime(Bounds bounds) : bounds_(bounds), parentId_(::getppid()) {
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    signals_ = ::signalfd(-1, &ending, SFD_CLOEXEC);
    // Whoever reads our output may go at any time.
    std::signal(SIGPIPE, SIG_IGN);
}

Lifetime::~Lifetime() { ::close(signals_); }

bool Lifetime::parentHasGone() const { return ::getppid() != parentId_; }

void Lifetime::waitForEnd() {
    const bool watchesInput = bounds_.parent && isPipe(STDIN_FILENO);
    std::array<pollfd, 2> entries{{{signals_, POLLIN, 0}, {watchesInput ? STDIN_FILENO : -1, POLLIN, 0}}};
    while (!bounds_.parent || !parentHasGone()) {
        milliseconds pause = bounds_.parent ? look : milliseconds(60'000);
        if (bounds_.time) {
            const auto lived = std::chrono::steady_clock::now() - start_;
            const auto left = std::chrono::ceil<milliseconds>(*bounds_.time - lived);
            if (left.count() <= 0) {
                return;
            }
            pause = std::min(pause, left);
        }
        if (::poll(entries.data(), entries.size(), static_cast<int>(pause.count())) <= 0) {
            continue;
        }
        if (entries[0].revents != 0 || (entries[1].revents != 0 && !drainInput())) {
            return;
        }
    }
}

} // namespace zentavo::devserver
