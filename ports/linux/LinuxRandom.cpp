#include "ports/linux/LinuxRandom.h"

#include <cerrno>
#include <system_error>

#include <sys/random.h>

#include "zentavo/foundation/Fault.h"

namespace zentavo::linux_port {

void LinuxRandom::fill(std::span<std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t got = ::getrandom(bytes.data(), bytes.size(), 0);
        if (got >= 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(got));
        } else if (errno != EINTR) {
            fatalError("The system gives no random bytes: " + std::system_category().message(errno));
        }
    }
}

} // namespace zentavo::linux_port
