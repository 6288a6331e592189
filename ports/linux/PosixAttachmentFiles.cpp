#include "ports/linux/PosixAttachmentFiles.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zentavo::linux_port {

namespace {

namespace fs = std::filesystem;

bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
           name.find('\0') == std::string_view::npos;
}

fs::path temporaryFolder() {
    const char* chosen = std::getenv("TMPDIR");
    return chosen != nullptr && *chosen == '/' ? chosen : "/tmp";
}

Error failure(const fs::path& path, int code) {
    return Error{path.string() + ": " + std::generic_category().message(code)};
}

/// 0, or what went wrong.
int writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        bytes.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
    return 0;
}

} // namespace

Result<std::string> PosixAttachmentFiles::write(std::string_view folder, std::string_view name,
                                                std::string_view bytes) {
    if (!isPlainName(folder) || !isPlainName(name)) {
        return Error{"not a plain name"};
    }
    const fs::path place = temporaryFolder() / folder;
    std::error_code error;
    fs::create_directories(place.parent_path(), error);
    if (error) {
        return failure(place.parent_path(), error.value());
    }
    if (mkdir(place.c_str(), 0700) != 0 && errno != EEXIST) {
        return failure(place, errno);
    }
    // One that was there already may be another user's, who could then change what is in it.
    struct stat found = {};
    if (lstat(place.c_str(), &found) != 0 || !S_ISDIR(found.st_mode) || found.st_uid != geteuid()) {
        return Error{place.string() + ": not a folder of this user"};
    }
    const fs::path path = place / name;
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0) {
        const int code = errno;
        rmdir(place.c_str());
        return failure(path, code);
    }
    int code = writeAll(file, bytes);
    if (close(file) != 0 && code == 0) { // a full disk may be told this late
        code = errno;
    }
    if (code != 0) {
        remove(path.string());
        return failure(path, code);
    }
    return path.string();
}

Result<platform::NotificationAttachment> PosixAttachmentFiles::attach(std::string identifier, const std::string& path) {
    struct stat found = {};
    if (stat(path.c_str(), &found) != 0) {
        return failure(path, errno);
    }
    if (!S_ISREG(found.st_mode) || found.st_size == 0) {
        return Error{path + ": no file with content"};
    }
    return platform::NotificationAttachment{std::move(identifier), path};
}

void PosixAttachmentFiles::remove(const std::string& path) {
    unlink(path.c_str());
    rmdir(fs::path(path).parent_path().c_str()); // fails where something else is in it, as it should
}

} // namespace zentavo::linux_port
