#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Result.h"

struct sqlite3;
struct sqlite3_stmt;

namespace zentavo::devserver {

class Database;

/// One use of an SQL statement. Its parameters count from 1 in the order of `bind`, its columns from 0.
class Statement {
public:
    Statement(Database& database, std::string_view sql);

    template <class... Parameters>
    Statement& bind(const Parameters&... parameters) {
        (bindNext(parameters), ...);
        return *this;
    }
    /// True when there is a row to read; false at the end.
    bool step();
    /// For what has no rows.
    void run() { step(); }

    std::string text(int column) const;
    std::int64_t integer(int column) const;

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    void bindNext(std::string_view text);
    void bindNext(std::int64_t number);
    void check(int code) const;

    Database& database_;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    int bound_ = 0;
};

/// An SQLite database, in memory or in a file. For one thread at a time. What goes wrong in the medium throws
/// `std::runtime_error`, which costs one request; text is handed over as parameters only, never as SQL.
class Database {
public:
    /// An empty path means memory. `schema` makes the tables that are not there yet;
    /// another store that has the file is waited for.
    static Result<std::unique_ptr<Database>> open(const std::string& path, const char* schema);

    void execute(const char* sql);
    /// Runs `body` as one transaction; it is undone when `body` throws.
    template <class Body>
    void transaction(Body body) {
        execute("BEGIN");
        try {
            body();
        } catch (...) {
            execute("ROLLBACK");
            throw;
        }
        execute("COMMIT");
    }

private:
    friend class Statement;
    struct Closer {
        void operator()(sqlite3* connection) const noexcept;
    };
    Database() = default;
    std::string errorText() const;

    std::unique_ptr<sqlite3, Closer> connection_;
};

} // namespace zentavo::devserver
