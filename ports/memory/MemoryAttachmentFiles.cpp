#include "ports/memory/MemoryAttachmentFiles.h"

#include <utility>

namespace zentavo::testing {

namespace {

bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos;
}

} // namespace

Result<std::string> MemoryAttachmentFiles::write(std::string_view folder, std::string_view name,
                                                 std::string_view bytes) {
    if (!isPlainName(folder) || !isPlainName(name)) {
        return Error{"not a plain name"};
    }
    std::string path = "/memory/tmp/" + std::string(folder) + "/" + std::string(name);
    MutexLock lock(mutex_);
    if (writeFailure_) {
        return Error{*writeFailure_};
    }
    if (!files_.emplace(path, bytes).second) {
        return Error{path + " is there already"};
    }
    return path;
}

Result<platform::NotificationAttachment> MemoryAttachmentFiles::attach(std::string identifier,
                                                                       const std::string& path) {
    MutexLock lock(mutex_);
    if (attachFailure_) {
        return Error{*attachFailure_};
    }
    const auto found = files_.find(path);
    if (found == files_.end() || found->second.empty()) {
        return Error{"no file with content at " + path};
    }
    return platform::NotificationAttachment{std::move(identifier), path};
}

void MemoryAttachmentFiles::remove(const std::string& path) {
    MutexLock lock(mutex_);
    files_.erase(path);
}

void MemoryAttachmentFiles::failWrites(std::optional<std::string> reason) {
    MutexLock lock(mutex_);
    writeFailure_ = std::move(reason);
}

void MemoryAttachmentFiles::failAttachments(std::optional<std::string> reason) {
    MutexLock lock(mutex_);
    attachFailure_ = std::move(reason);
}

std::map<std::string, std::string> MemoryAttachmentFiles::files() const {
    MutexLock lock(mutex_);
    return files_;
}

} // namespace zentavo::testing
