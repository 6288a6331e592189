#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace zentavo::linux_port {

/// How a call to the database ended, as far as the callers treat it differently.
enum class StoreStatus {
    ok,
    busy,    ///< another process kept it locked for longer than our patience
    tooLong, ///< this key or value can never be stored
    damaged, ///< the file is no database, or not the one we wrote
    failed,  ///< the medium refuses: read-only, full, broken
    noPlace, ///< no file can be had here, now or later: none can be made, it is not ours, or a later version made it
};

/// A prepared statement. Between two uses it holds no lock.
class SqliteStatement {
public:
    SqliteStatement() = default;

    /// Text for the parameter at `position`, counted from 1; it must live until the statement has run.
    SqliteStatement& bind(int position, std::string_view text);
    /// Runs the statement to its first row or its end, copies that row's first column where asked for and there is a
    /// row, and lets go of the database.
    StoreStatus run(std::optional<std::string>* firstColumn = nullptr);

private:
    friend class SqliteDatabase;
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

/// One connection, used by one thread at a time. No call waits longer for a lock than the patience set.
class SqliteDatabase {
public:
    enum class Mode { existing, create, readOnly };

    SqliteDatabase() = default;
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    /// A file that may only be read is opened for that.
    StoreStatus open(const std::filesystem::path& path, Mode mode);
    bool isOpen() const noexcept { return connection_ != nullptr; }
    /// Never carries the log over to the file: that would wait for the medium.
    void close() noexcept { connection_.reset(); }
    /// Whether the last call failed because the file, or the log beside it, was opened when it could only be read.
    bool refusedToWrite() const noexcept;
    void setPatience(std::chrono::milliseconds patience) noexcept;

    StoreStatus execute(const char* sql);
    StoreStatus prepare(SqliteStatement& statement, std::string_view sql);
    /// The number that `PRAGMA user_version` gives.
    StoreStatus userVersion(std::int64_t& version);
    /// What went wrong last, for people.
    std::string errorText() const;

    sqlite3* handle() const noexcept { return connection_.get(); }

private:
    struct Closer {
        void operator()(sqlite3* connection) const noexcept;
    };
    std::unique_ptr<sqlite3, Closer> connection_;
    std::chrono::milliseconds patience_ = {};
    std::chrono::steady_clock::time_point deadline_;
};

} // namespace zentavo::linux_port
