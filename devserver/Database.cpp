#include "devserver/Database.h"

#include <stdexcept>

#include <sqlite3.h>

namespace zentavo::devserver {

namespace {

constexpr int longestWait = 2'000; // milliseconds

} // namespace

void Database::Closer::operator()(sqlite3* connection) const noexcept { sqlite3_close_v2(connection); }
void Statement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }

Result<std::unique_ptr<Database>> Database::open(const std::string& path, const char* schema) {
    std::unique_ptr<Database> database(new Database);
    sqlite3* connection = nullptr;
    const int code = sqlite3_open_v2(path.empty() ? ":memory:" : path.c_str(), &connection,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    database->connection_.reset(connection);
    if (code != SQLITE_OK) {
        return Error{"the database " + path + " cannot be opened: " + database->errorText()};
    }
    // Two stores may share a file.
    sqlite3_busy_timeout(connection, longestWait);
    try {
        database->execute(schema);
    } catch (const std::runtime_error& error) {
        return Error{"the database " + path + " cannot be used: " + error.what()};
    }
    return database;
}

void Database::execute(const char* sql) {
    if (sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(errorText());
    }
}

std::string Database::errorText() const { return sqlite3_errmsg(connection_.get()); }

Statement::Statement(Database& database, std::string_view sql) : database_(database) {
    sqlite3_stmt* statement = nullptr;
    check(
        sqlite3_prepare_v2(database_.connection_.get(), sql.data(), static_cast<int>(sql.size()), &statement, nullptr));
    statement_.reset(statement);
}

void Statement::bindNext(std::string_view text) {
    check(sqlite3_bind_text64(statement_.get(), ++bound_, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void Statement::bindNext(std::int64_t number) { check(sqlite3_bind_int64(statement_.get(), ++bound_, number)); }

bool Statement::step() {
    const int code = sqlite3_step(statement_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        check(code);
    }
    return code == SQLITE_ROW;
}

std::string Statement::text(int column) const {
    const unsigned char* bytes = sqlite3_column_text(statement_.get(), column);
    const int size = sqlite3_column_bytes(statement_.get(), column);
    return bytes != nullptr ? std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)) : "";
}

std::int64_t Statement::integer(int column) const { return sqlite3_column_int64(statement_.get(), column); }

void Statement::check(int code) const {
    if (code != SQLITE_OK) {
        throw std::runtime_error(database_.errorText());
    }
}

} // namespace zentavo::devserver
