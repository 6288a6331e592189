#include "ports/linux/GenerationFile.h"

#include <algorithm>
#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zentavo::linux_port {
namespace {

constexpr off_t fileBytes = 4096;

/// Moves a descriptor away from the standard streams' numbers. A host that was started without them leaves these free, and
/// whatever it prints would be written over the numbers in the file. (SQLite does so for its own.)
int beyondStandardStreams(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO) {
        return descriptor;
    }
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int reason = errno;
    ::close(descriptor);
    errno = reason;
    return moved;
}

/// Gives the file its size with blocks behind it: touching a page that the full medium cannot hold would kill the
/// process. Never overwrites, so a process that comes second does no harm.
bool allocate(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        return false;
    }
    if (status.st_size >= fileBytes) {
        return true;
    }
    if (::fallocate(descriptor, 0, 0, fileBytes) == 0) {
        return true;
    }
    return errno == EOPNOTSUPP && ::ftruncate(descriptor, fileBytes) == 0;
}

} // namespace

std::unique_ptr<GenerationFile> GenerationFile::open(const std::filesystem::path& path, bool coherent) {
    int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    const bool readOnly = descriptor < 0 && (errno == EACCES || errno == EPERM || errno == EROFS);
    if (readOnly) {
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    }
    descriptor = beyondStandardStreams(descriptor);
    if (descriptor < 0) {
        return nullptr;
    }
    void* memory = MAP_FAILED;
    if (coherent && allocate(descriptor)) {
        memory = ::mmap(nullptr, fileBytes, readOnly ? PROT_READ : PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    }
    Page* page = memory == MAP_FAILED ? nullptr : static_cast<Page*>(memory);
    return std::unique_ptr<GenerationFile>(new GenerationFile(descriptor, page, readOnly));
}

GenerationFile::~GenerationFile() {
    if (page_ != nullptr) {
        ::munmap(page_, fileBytes);
    }
    ::close(descriptor_);
}

std::uint64_t GenerationFile::begun() const noexcept { return page_ != nullptr ? page_->begun.load() : 0; }

std::optional<std::uint64_t> GenerationFile::settled() const noexcept {
    if (page_ == nullptr) {
        return std::nullopt;
    }
    const std::uint64_t begun = page_->begun.load();
    return page_->done.load() == begun ? std::optional(begun) : std::nullopt;
}

std::uint64_t GenerationFile::begin() noexcept {
    if (!canTell()) {
        return 0;
    }
    // The write lock keeps others out, except where the database is exchanged: no number may be given twice.
    std::uint64_t begun = page_->begun.load();
    std::uint64_t number = 0;
    do {
        number = std::max(begun, page_->done.load()) + 1;
    } while (!page_->begun.compare_exchange_weak(begun, number));
    return number;
}

void GenerationFile::finish(std::uint64_t number) noexcept {
    if (!canTell()) {
        return;
    }
    // The write lock is free again by now: a later write may be done before this line is reached.
    std::uint64_t done = page_->done.load();
    while (done < number && !page_->done.compare_exchange_weak(done, number)) {
    }
}

std::uint64_t GenerationFile::replacements() const noexcept {
    return page_ != nullptr ? page_->replacements.load() : 0;
}

void GenerationFile::replaced() noexcept {
    if (canTell()) {
        page_->replacements.fetch_add(1);
        finish(begin());
    }
}

GenerationFile::Lock::Lock(GenerationFile& file, std::chrono::milliseconds patience) : descriptor_(file.descriptor_) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!(held_ = ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

GenerationFile::Lock::~Lock() {
    if (held_) {
        ::flock(descriptor_, LOCK_UN);
    }
}

} // namespace zentavo::linux_port
