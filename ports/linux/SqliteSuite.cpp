#include "ports/linux/SqliteSuite.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace zentavo::linux_port {
namespace {

constexpr std::chrono::milliseconds patience(250);
/// Pages of 4 KiB in the log.
constexpr int longLog = 1000;
constexpr std::int64_t schemaVersion = 1;
constexpr int maximumDamagedFiles = 3;

/// As std::filesystem::create_directories, but each new folder is for its owner alone.
bool makeFolder(const std::filesystem::path& folder) {
    if (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) {
        return true; // where it is no folder, opening a file in it tells
    }
    return errno == ENOENT && folder.has_relative_path() && makeFolder(folder.parent_path()) &&
           (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST);
}

/// 0 when there is no such file.
ino_t inodeOf(const std::filesystem::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

void syncFile(const std::filesystem::path& path, int flags) {
    const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

/// File systems between machines: locks may work there, shared memory does not.
bool isNetworkFileSystem(const std::filesystem::path& folder) {
    struct statfs status {};
    if (::statfs(folder.c_str(), &status) != 0) {
        return false;
    }
    // nfs, smb, cifs, smb2, 9p, afs, ceph
    constexpr std::array<std::uint32_t, 7> magic = {0x6969,     0x517B,     0xFF534D42, 0xFE534D42,
                                                    0x01021997, 0x5346414F, 0x00C36400};
    return std::find(magic.begin(), magic.end(), static_cast<std::uint32_t>(status.f_type)) != magic.end();
}

} // namespace

SqliteSuite::SqliteSuite(std::filesystem::path folder, std::string name)
    : folder_(std::move(folder)), name_(std::move(name)) {}

std::filesystem::path SqliteSuite::path() const { return folder_ / (name_ + ".sqlite"); }

StoreStatus SqliteSuite::ready() {
    if (database_.isOpen() && generation_->replacements() == replacements_ && !wantsToWrite_) {
        return StoreStatus::ok;
    }
    const StoreStatus status = openFiles();
    wasBusy_ = status == StoreStatus::busy;
    wantsToWrite_ = false;
    if (status != StoreStatus::ok) {
        database_.close();
    }
    return status;
}

std::chrono::milliseconds SqliteSuite::openingPatience() const noexcept {
    return wasBusy_ ? std::chrono::milliseconds(0) : patience;
}

StoreStatus SqliteSuite::openGeneration() {
    if (generation_ && !generation_->isReadOnly()) {
        return StoreStatus::ok;
    }
    if (makeFolder(folder_)) {
        isOnNetwork_ = isNetworkFileSystem(folder_);
        if (auto opened = GenerationFile::open(folder_ / (name_ + ".generation"), !isOnNetwork_)) {
            generation_ = std::move(opened);
            return StoreStatus::ok;
        }
    }
    const int reason = errno;
    if (generation_) {
        return StoreStatus::ok; // good enough for reading, as before
    }
    problem_ = std::system_category().message(reason);
    return reason == EMFILE || reason == ENFILE || reason == ENOMEM ? StoreStatus::failed : StoreStatus::noPlace;
}

StoreStatus SqliteSuite::openFiles() {
    StoreStatus status = openGeneration();
    if (status != StoreStatus::ok) {
        return status;
    }
    // Asked for before the file is opened: an exchange in between is then found out by the next call.
    replacements_ = generation_->replacements();
    bool fresh = inodeOf(path()) == 0;
    // Without a generation of our own nobody would be told of what we write.
    const bool readOnly = generation_->isReadOnly();
    status = fresh ? StoreStatus::ok
                   : connect(readOnly ? SqliteDatabase::Mode::readOnly : SqliteDatabase::Mode::existing, fresh);
    if (status == StoreStatus::ok && fresh && readOnly) {
        problem_ = "it may only be read, and there is nothing";
        return StoreStatus::noPlace;
    }
    if (status == StoreStatus::ok && fresh) {
        const GenerationFile::Lock lock(*generation_, openingPatience());
        if (!lock) {
            problem_ = "another process holds it";
            return StoreStatus::busy;
        }
        replacements_ = generation_->replacements();
        status = connect(SqliteDatabase::Mode::create, fresh);
        if (status == StoreStatus::ok && fresh) {
            status = setUp();
        }
        if (status == StoreStatus::failed) {
            status = StoreStatus::noPlace; // no file can be made
        }
    }
    if (status != StoreStatus::ok) {
        return status;
    }
    database_.setPatience(patience);
    for (const auto& [statement, sql] : {
             std::pair(&select_, "SELECT value FROM preferences WHERE key = ?1"),
             std::pair(&upsert_, "INSERT INTO preferences VALUES (?1, ?2) "
                                 "ON CONFLICT (key) DO UPDATE SET value = excluded.value"),
             std::pair(&delete_, "DELETE FROM preferences WHERE key = ?1"),
             std::pair(&begin_, "BEGIN IMMEDIATE"),
             std::pair(&commit_, "COMMIT"),
             std::pair(&rollBack_, "ROLLBACK"),
         }) {
        status = database_.prepare(*statement, sql);
        if (status != StoreStatus::ok) {
            return note(status);
        }
    }
    sqlite3_commit_hook(
        database_.handle(),
        [](void* self) {
            auto& suite = *static_cast<SqliteSuite*>(self);
            suite.writing_ = suite.generation_->begin();
            return 0;
        },
        this);
    // Takes the place of the library's own checkpoints, which would wait for the medium on the writer's thread.
    sqlite3_wal_hook(
        database_.handle(),
        [](void* self, sqlite3*, const char*, int pages) {
            static_cast<SqliteSuite*>(self)->logIsLong_ = pages >= longLog;
            return SQLITE_OK;
        },
        this);
    return StoreStatus::ok;
}

StoreStatus SqliteSuite::connect(SqliteDatabase::Mode mode, bool& fresh) {
    for (SqliteStatement* statement : {&select_, &upsert_, &delete_, &begin_, &commit_, &rollBack_}) {
        *statement = {};
    }
    // Asked for before the file is opened: where the two come to differ, `setAside` moves nothing.
    inode_ = inodeOf(path());
    StoreStatus status = database_.open(path(), mode);
    std::int64_t version = 0;
    if (status == StoreStatus::ok) {
        database_.setPatience(openingPatience());
        status = database_.userVersion(version);
    }
    if (status == StoreStatus::ok && version > schemaVersion) {
        problem_ = "a later version of the SDK made it";
        return StoreStatus::noPlace;
    }
    if (status == StoreStatus::ok) {
        status = database_.execute("PRAGMA synchronous = NORMAL");
    }
    fresh = status == StoreStatus::ok && version == 0;
    return note(status);
}

StoreStatus SqliteSuite::setUp() {
    // Not one wait for the medium: a power cut now loses a file in which nothing is stored yet.
    const std::string sql =
        std::string("PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY; PRAGMA journal_mode = ") +
        (isOnNetwork_ ? "DELETE" : "WAL") +
        "; BEGIN IMMEDIATE; CREATE TABLE IF NOT EXISTS preferences "
        "(key TEXT PRIMARY KEY NOT NULL, value TEXT NOT NULL) WITHOUT ROWID; PRAGMA user_version = " +
        std::to_string(schemaVersion) + "; COMMIT; PRAGMA synchronous = NORMAL";
    return note(database_.execute(sql.c_str()));
}

StoreStatus SqliteSuite::read(std::string_view key, std::optional<std::string>& text) {
    text.reset();
    return note(select_.bind(1, key).run(&text));
}

StoreStatus SqliteSuite::write(std::string_view key, const std::optional<std::string>& text) {
    return settle(text ? upsert_.bind(1, key).bind(2, *text).run() : delete_.bind(1, key).run());
}

StoreStatus SqliteSuite::begin() { return note(begin_.run()); }

StoreStatus SqliteSuite::commit() { return isInTransaction() ? settle(commit_.run()) : StoreStatus::ok; }

void SqliteSuite::rollBack() {
    if (isInTransaction()) {
        rollBack_.run();
    }
}

bool SqliteSuite::isInTransaction() const noexcept {
    return database_.isOpen() && sqlite3_get_autocommit(database_.handle()) == 0;
}

StoreStatus SqliteSuite::settle(StoreStatus outcome) {
    if (writing_) {
        generation_->finish(*writing_);
        lastWrite_ = *writing_;
        writing_.reset();
    }
    return note(outcome);
}

void SqliteSuite::setPatient(bool patient) noexcept {
    database_.setPatience(patient ? patience : std::chrono::milliseconds(0));
}

std::optional<std::string> SqliteSuite::setAside() {
    database_.close();
    if (!generation_) {
        return std::nullopt;
    }
    const GenerationFile::Lock lock(*generation_, patience);
    if (!lock) {
        return std::nullopt;
    }
    if (inodeOf(path()) != inode_) {
        return "";
    }
    const std::filesystem::path target = damagedName();
    if (::rename(path().c_str(), target.c_str()) != 0) {
        problem_ = std::system_category().message(errno);
        return std::nullopt;
    }
    // They belong to the file that went and would be taken for the fresh one's.
    ::unlink((path() += "-wal").c_str());
    ::unlink((path() += "-shm").c_str());
    generation_->replaced();
    return target.filename();
}

std::filesystem::path SqliteSuite::damagedName() const {
    std::filesystem::path oldest;
    auto oldestTime = std::filesystem::file_time_type::max();
    for (int n = 1; n <= maximumDamagedFiles; ++n) {
        std::filesystem::path candidate = folder_ / (name_ + ".damaged-" + std::to_string(n));
        std::error_code error;
        const auto time = std::filesystem::last_write_time(candidate, error);
        if (error) {
            return candidate; // not taken
        }
        if (time < oldestTime) {
            oldestTime = time;
            oldest = std::move(candidate);
        }
    }
    return oldest;
}

StoreStatus SqliteSuite::note(StoreStatus status) {
    if (status != StoreStatus::ok) {
        problem_ = database_.errorText();
        wantsToWrite_ = wantsToWrite_ || (database_.isOpen() && database_.refusedToWrite());
    }
    return status;
}

void SqliteSuite::sync(const std::filesystem::path& path) {
    // The library's own handle: to close one of ours would free the locks that this process holds on the file.
    SqliteDatabase database;
    if (database.open(path, SqliteDatabase::Mode::existing) == StoreStatus::ok) {
        sqlite3_file* file = nullptr;
        sqlite3_file_control(database.handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
        if (file != nullptr && file->pMethods != nullptr) {
            file->pMethods->xSync(file, SQLITE_SYNC_NORMAL);
        }
    }
    syncFile(std::filesystem::path(path) += "-wal", O_RDONLY);
    // New files have their names only once the folder is on the medium.
    syncFile(path.parent_path(), O_RDONLY | O_DIRECTORY);
}

void SqliteSuite::carryOver(const std::filesystem::path& path) {
    constexpr int attempts = 10;
    SqliteDatabase database;
    if (database.open(path, SqliteDatabase::Mode::existing) != StoreStatus::ok) {
        return;
    }
    database.setPatience(patience);
    int inLog = 0;
    int carried = 0;
    int code = SQLITE_BUSY;
    // Passive: neither waits for readers and writers nor keeps them waiting. Busy means that somebody else is at it.
    for (int i = 0; code == SQLITE_BUSY && i < attempts; ++i) {
        if (i > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        code = sqlite3_wal_checkpoint_v2(database.handle(), nullptr, SQLITE_CHECKPOINT_PASSIVE, &inLog, &carried);
    }
    if (code != SQLITE_OK || inLog != carried) {
        return;
    }
    // The next write begins the log anew and waits for the medium. It shall be this one, which changes nothing.
    std::int64_t version = 0;
    if (database.execute("BEGIN IMMEDIATE") == StoreStatus::ok && database.userVersion(version) == StoreStatus::ok) {
        database.execute(("PRAGMA user_version = " + std::to_string(version) + "; COMMIT").c_str());
    }
}

} // namespace zentavo::linux_port
