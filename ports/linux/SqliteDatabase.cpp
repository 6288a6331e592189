#include "ports/linux/SqliteDatabase.h"

#include <cerrno>
#include <charconv>
#include <thread>

#include <sqlite3.h>

namespace zentavo::linux_port {
namespace {

/// What a row may hold at most, key and value together: a hostile file shall not fill our memory.
constexpr int maximumRowBytes = 2 << 20;

StoreStatus statusOf(int code, sqlite3* connection) {
    switch (code & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
        return StoreStatus::ok;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return StoreStatus::busy;
    case SQLITE_TOOBIG:
        return StoreStatus::tooLong;
    case SQLITE_CANTOPEN: {
        // A process that has no descriptors left may have some later.
        const int reason = sqlite3_system_errno(connection);
        return reason == EMFILE || reason == ENFILE || reason == ENOMEM ? StoreStatus::failed : StoreStatus::noPlace;
    }
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return StoreStatus::damaged;
    default:
        return StoreStatus::failed;
    }
}

} // namespace

void SqliteStatement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }

SqliteStatement& SqliteStatement::bind(int position, std::string_view text) {
    // A null address would bind NULL instead of empty text.
    const char* address = text.data() != nullptr ? text.data() : "";
    sqlite3_bind_text64(statement_.get(), position, address, text.size(), SQLITE_STATIC, SQLITE_UTF8);
    return *this;
}

StoreStatus SqliteStatement::run(std::optional<std::string>* firstColumn) {
    const int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW && firstColumn != nullptr) {
        const auto* text = static_cast<const char*>(sqlite3_column_blob(statement_.get(), 0));
        firstColumn->emplace(text != nullptr ? text : "",
                             static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), 0)));
    }
    // Without a row the outcome of an autocommit shows only here.
    const int reset = sqlite3_reset(statement_.get());
    return statusOf(code == SQLITE_ROW ? reset : code, sqlite3_db_handle(statement_.get()));
}

void SqliteDatabase::Closer::operator()(sqlite3* connection) const noexcept { sqlite3_close_v2(connection); }

StoreStatus SqliteDatabase::open(const std::filesystem::path& path, Mode mode) {
    sqlite3* connection = nullptr;
    const int access = mode == Mode::readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    const int create = mode == Mode::create ? SQLITE_OPEN_CREATE : 0;
    const int code = sqlite3_open_v2(path.c_str(), &connection, access | create | SQLITE_OPEN_NOMUTEX, nullptr);
    connection_.reset(connection); // also a failed one, which knows the reason
    if (code != SQLITE_OK) {
        return statusOf(code, connection);
    }
    sqlite3_extended_result_codes(connection, 1);
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, maximumRowBytes);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    // A file that somebody else has made runs nothing here.
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    return StoreStatus::ok;
}

bool SqliteDatabase::refusedToWrite() const noexcept {
    return (sqlite3_errcode(connection_.get()) & 0xFF) == SQLITE_READONLY;
}

void SqliteDatabase::setPatience(std::chrono::milliseconds patience) noexcept {
    patience_ = patience;
    // The library's own way of waiting sleeps for milliseconds, while a write takes microseconds: a process that writes
    // all the time would starve the others.
    sqlite3_busy_handler(
        connection_.get(),
        [](void* self, int attempts) {
            auto& database = *static_cast<SqliteDatabase*>(self);
            const auto now = std::chrono::steady_clock::now();
            if (attempts == 0) {
                database.deadline_ = now + database.patience_;
            }
            if (now >= database.deadline_) {
                return 0;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(attempts < 4 ? 50 : 500));
            return 1;
        },
        this);
}

StoreStatus SqliteDatabase::execute(const char* sql) {
    return statusOf(sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr), connection_.get());
}

StoreStatus SqliteDatabase::prepare(SqliteStatement& statement, std::string_view sql) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v3(connection_.get(), sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    statement.statement_.reset(prepared);
    // Our statements are right, so the table that they speak of is missing or another one.
    return code == SQLITE_ERROR ? StoreStatus::damaged : statusOf(code, connection_.get());
}

StoreStatus SqliteDatabase::userVersion(std::int64_t& version) {
    SqliteStatement statement;
    std::optional<std::string> text;
    StoreStatus status = prepare(statement, "PRAGMA user_version");
    if (status == StoreStatus::ok) {
        status = statement.run(&text);
    }
    version = 0;
    if (text) {
        std::from_chars(text->data(), text->data() + text->size(), version);
    }
    return status;
}

std::string SqliteDatabase::errorText() const { return connection_ ? sqlite3_errmsg(connection_.get()) : "not open"; }

} // namespace zentavo::linux_port
