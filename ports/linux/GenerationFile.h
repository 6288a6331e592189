#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

namespace zentavo::linux_port {

/// A page of memory that all processes with one suite open share, by way of a small file beside the database. It tells
/// a reader for the price of a memory access whether anybody has written since it last asked the database.
///
/// Each write takes the next number. It enters the number as begun while it holds the database's write lock, before it
/// commits, and as done afterwards; so numbers are begun in the order of the commits. As long as the two differ a write
/// is under way, or its process was killed: then nothing that is read may be kept, and the next write settles it.
/// A read that finds them equal before it asks the database sees every write up to that number.
class GenerationFile {
public:
    /// Opens or makes the file; null when that cannot be done. With `coherent` false (a medium whose mappings do not
    /// follow each other, as between the machines of a network) or where mapping fails, nothing is ever settled. A file
    /// that may only be read shows what others write.
    static std::unique_ptr<GenerationFile> open(const std::filesystem::path& path, bool coherent);
    ~GenerationFile();
    GenerationFile(const GenerationFile&) = delete;
    GenerationFile& operator=(const GenerationFile&) = delete;

    bool isReadOnly() const noexcept { return readOnly_; }

    /// The number of the last write that was begun. What was read while `settled` gave this number is still good.
    std::uint64_t begun() const noexcept;
    /// The number of the last write when none is under way.
    std::optional<std::uint64_t> settled() const noexcept;

    /// Call with the database's write lock held, before the commit. Returns the write's number; 0 without shared memory
    /// or where it is read-only.
    std::uint64_t begin() noexcept;
    /// Call after the commit, or after it failed.
    void finish(std::uint64_t number) noexcept;

    /// How often the database file has been exchanged for another. A process that finds this changed opens it anew.
    std::uint64_t replacements() const noexcept;
    /// Tells everybody that the file is another one now. Call with the file's `Lock` held.
    void replaced() noexcept;

    /// Keeps other processes, and other objects of this one, from setting the database up or moving it meanwhile. Freed
    /// by the system when the process is killed.
    class Lock {
    public:
        /// Waits no longer than `patience`.
        Lock(GenerationFile& file, std::chrono::milliseconds patience);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        explicit operator bool() const noexcept { return held_; }

    private:
        const int descriptor_;
        bool held_ = false;
    };

private:
    /// The file's content. Any bytes will do to start with, since only changes count.
    struct Page {
        std::atomic<std::uint64_t> begun;
        std::atomic<std::uint64_t> done;
        std::atomic<std::uint64_t> replacements;
    };
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "processes cannot share a lock of the library's");

    GenerationFile(int descriptor, Page* page, bool readOnly)
        : descriptor_(descriptor), readOnly_(readOnly), page_(page) {}

    bool canTell() const noexcept { return page_ != nullptr && !readOnly_; }

    const int descriptor_;
    const bool readOnly_;
    /// Null when there is no shared memory.
    Page* const page_;
};

} // namespace zentavo::linux_port
