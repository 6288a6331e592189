#include "ports/linux/StdoutConsole.h"

#include <cstdio>
#include <string>

#include "ports/linux/BrokenPipeGuard.h"

namespace zentavo::linux_port {

void StdoutConsole::writeLine(std::string_view line) {
    std::string text;
    text.reserve(line.size() + 1);
    text.append(line).push_back('\n');
    const BrokenPipeGuard guard;
    // The stream's own lock also keeps the host's prints out of the line.
    ::flockfile(stdout);
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    ::funlockfile(stdout);
}

} // namespace zentavo::linux_port
