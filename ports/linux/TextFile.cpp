#include "ports/linux/TextFile.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zentavo::linux_port {

std::optional<std::string> readTextFile(const std::filesystem::path& path, std::size_t maximumBytes) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return std::nullopt;
    }
    std::string text;
    struct stat status {};
    bool good = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    // The kernel's own files give no size beforehand.
    std::size_t size = 0;
    while (good && size <= maximumBytes) {
        text.resize(size + std::min<std::size_t>(maximumBytes + 1 - size, 16384));
        const ssize_t got = ::read(descriptor, text.data() + size, text.size() - size);
        if (got == 0) {
            break;
        }
        good = got > 0 || errno == EINTR;
        size += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    ::close(descriptor);
    if (!good || size > maximumBytes) {
        return std::nullopt;
    }
    text.resize(size);
    return text;
}

} // namespace zentavo::linux_port
