#pragma once

#include "ports/linux/GenerationFile.h"
#include "ports/linux/SqliteDatabase.h"

namespace zentavo::linux_port {

/// The files of one preference suite: "<name>.sqlite" with its log, "<name>.generation", and up to three
/// "<name>.damaged-<n>" that were moved out of the way. Rows of key and JSON text, no cache. One thread at a time.
///
/// The database is in write-ahead mode, where a commit is a write to the log and waits for no disk. On network file
/// systems, which that mode does not work on, it keeps a rollback journal, and commits do wait.
class SqliteSuite {
public:
    /// Opens nothing yet. `name` is the file name without its extension.
    SqliteSuite(std::filesystem::path folder, std::string name);

    /// Opens the files, and makes folder and files that are not there; opens anew what another process has exchanged.
    /// Costs nothing when all is well. After `busy` the next calls do not wait until one has found it free.
    ///
    /// A suite that may only be read is ready: its writes fail, and after each the next call looks whether that has
    /// changed.
    StoreStatus ready();

    /// The members below want a suite that is ready.
    GenerationFile& generation() noexcept { return *generation_; }
    StoreStatus read(std::string_view key, std::optional<std::string>& text);
    /// No text removes the key. Outside a transaction it is one by itself.
    StoreStatus write(std::string_view key, const std::optional<std::string>& text);

    /// Takes the write lock; what is read from now on nobody else changes. End it with `commit` or `rollBack`. Where
    /// `ready` has opened the files anew meanwhile, the transaction is over and both do nothing.
    StoreStatus begin();
    StoreStatus commit();
    void rollBack();
    /// The generation that the last write has made; 0 without shared memory.
    std::uint64_t lastWrite() const noexcept { return lastWrite_; }

    /// How long a call waits for the lock of another process.
    void setPatient(bool patient) noexcept;
    /// True when the last write left a log long enough for `carryOver`.
    bool logIsLong() const noexcept { return logIsLong_; }

    /// Moves a damaged database out of the way and returns its new name; `ready` then makes a fresh one. Empty where
    /// another process has done so already; none when it cannot be moved.
    std::optional<std::string> setAside();

    /// The reason of the last failure, for people.
    const std::string& problem() const noexcept { return problem_; }
    std::filesystem::path path() const;

    /// Both wait for the medium, and are called on any thread while others read and write. `sync` returns when it has
    /// everything that was written before. `carryOver` also moves the log into the database file and begins it anew.
    static void sync(const std::filesystem::path& path);
    static void carryOver(const std::filesystem::path& path);

private:
    StoreStatus openGeneration();
    StoreStatus openFiles();
    std::chrono::milliseconds openingPatience() const noexcept;
    StoreStatus connect(SqliteDatabase::Mode mode, bool& fresh);
    StoreStatus setUp();
    bool isInTransaction() const noexcept;
    StoreStatus settle(StoreStatus outcome);
    StoreStatus note(StoreStatus status);
    std::filesystem::path damagedName() const;

    const std::filesystem::path folder_;
    const std::string name_;
    bool isOnNetwork_ = false;
    std::unique_ptr<GenerationFile> generation_;
    std::uint64_t replacements_ = 0;
    std::uint64_t inode_ = 0;
    SqliteDatabase database_;
    SqliteStatement select_, upsert_, delete_, begin_, commit_, rollBack_;
    /// The number of the write under way, given by the commit hook.
    std::optional<std::uint64_t> writing_;
    std::uint64_t lastWrite_ = 0;
    bool logIsLong_ = false;
    /// The last attempt to open the files found them locked.
    bool wasBusy_ = false;
    /// A write has failed because the files are read-only.
    bool wantsToWrite_ = false;
    std::string problem_;
};

} // namespace zentavo::linux_port
