#include "devserver/InboxStore.h"

#include <stdexcept>
#include <utility>

#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

constexpr const char* schema = R"(
CREATE TABLE IF NOT EXISTS catalogs(number INTEGER PRIMARY KEY, id TEXT NOT NULL UNIQUE, name TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS messages(number INTEGER PRIMARY KEY, id TEXT NOT NULL UNIQUE, lookup_type TEXT NOT NULL,
  lookup_id TEXT NOT NULL, destination INTEGER NOT NULL, item TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS labels(message TEXT NOT NULL, catalog TEXT NOT NULL,
  PRIMARY KEY(message, catalog)) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS states(message TEXT NOT NULL, lookup_type TEXT NOT NULL, lookup_id TEXT NOT NULL,
  status INTEGER NOT NULL, PRIMARY KEY(message, lookup_type, lookup_id)) WITHOUT ROWID;
)";

/// A user's messages with their states: parameters 1 and 2 are the user's type and id. A message that the user has not
/// touched is unread; one that is removed is not there.
const std::string visible = R"(
SELECT m.number, m.id, m.destination, m.item, COALESCE(s.status, 1) AS status
  FROM messages m
  LEFT JOIN states s ON s.message = m.id AND s.lookup_type = ?1 AND s.lookup_id = ?2
  WHERE m.lookup_type IN ('*', ?1) AND m.lookup_id IN ('*', ?2) AND COALESCE(s.status, 1) <> 3)";

std::string fromVisible(const std::string& select, const std::string& rest) {
    return select + " FROM (" + visible + ") " + rest;
}

/// A row of id, destination, item and status as the user gets it.
Map itemOf(const Statement& row, const InboxUser& user) {
    Map item{{"item_id", row.text(0)}, {"destination_id", row.integer(1)}, {"lookup_type", user.lookupType}};
    if (const auto stored = json::readMap(row.text(2))) {
        item.merge(*stored);
    }
    item.set("status", row.integer(3));
    return item;
}

std::string written(const Value& value) {
    auto text = json::write(value);
    return text ? *std::move(text) : throw std::runtime_error(text.error().message);
}

} // namespace

Result<std::unique_ptr<InboxStore>> InboxStore::open(const std::string& path) {
    auto database = Database::open(path, schema);
    if (!database) {
        return database.error();
    }
    return std::unique_ptr<InboxStore>(new InboxStore(*std::move(database)));
}

std::int64_t InboxStore::messageCount() const {
    Statement statement(*database_, "SELECT COUNT(*) FROM messages");
    return statement.step() ? statement.integer(0) : 0;
}

bool InboxStore::exists(std::string_view sql, std::string_view id) const {
    MutexLock lock(mutex_);
    return Statement(*database_, sql).bind(id).step();
}

bool InboxStore::isEmpty() const {
    MutexLock lock(mutex_);
    return messageCount() == 0;
}

bool InboxStore::hasCatalog(std::string_view id) const { return exists("SELECT 1 FROM catalogs WHERE id = ?", id); }
bool InboxStore::hasMessage(std::string_view id) const { return exists("SELECT 1 FROM messages WHERE id = ?", id); }

void InboxStore::clear() {
    MutexLock lock(mutex_);
    database_->execute("DELETE FROM messages; DELETE FROM labels; DELETE FROM states; DELETE FROM catalogs");
}

void InboxStore::addCatalog(std::string_view id, std::string_view name) {
    MutexLock lock(mutex_);
    Statement(*database_,
              "INSERT INTO catalogs(id, name) VALUES(?, ?) ON CONFLICT(id) DO UPDATE SET name = excluded.name")
        .bind(id, name)
        .run();
}

bool InboxStore::add(const Message& message) {
    MutexLock lock(mutex_);
    const bool taken = Statement(*database_, "SELECT 1 FROM messages WHERE id = ?").bind(message.id).step();
    if (taken || messageCount() >= maximumMessages) {
        return false;
    }
    database_->transaction([&] {
        Statement(*database_,
                  "INSERT INTO messages(id, lookup_type, lookup_id, destination, item) VALUES(?, ?, ?, ?, ?)")
            .bind(message.id, message.user.lookupType, message.user.lookupId, message.destination,
                  written(message.item))
            .run();
        for (const std::string& catalog : message.catalogs) {
            Statement(*database_, "INSERT OR IGNORE INTO labels VALUES(?, ?)").bind(message.id, catalog).run();
        }
    });
    return true;
}

List InboxStore::catalogs() const {
    MutexLock lock(mutex_);
    Statement rows(*database_, "SELECT id, name FROM catalogs ORDER BY number");
    List list;
    while (rows.step()) {
        list.emplace_back(Map{{"catalogId", rows.text(0)}, {"catalogName", rows.text(1)}});
    }
    return list;
}

List InboxStore::page(const PageRequest& request) const {
    const std::string wanted = written(List(request.catalogs.begin(), request.catalogs.end()));
    MutexLock lock(mutex_);
    Statement rows(*database_, fromVisible("SELECT id, destination, item, status",
                                           R"(WHERE destination = ?3 AND (?4 = '[]' OR EXISTS
  (SELECT 1 FROM labels WHERE message = id AND catalog IN (SELECT value FROM json_each(?4))))
  ORDER BY number DESC LIMIT ?5 OFFSET ?6)"));
    rows.bind(request.user.lookupType, request.user.lookupId, request.destination, wanted, request.limit,
              (request.page - 1) * request.limit);
    List items;
    while (rows.step()) {
        items.emplace_back(itemOf(rows, request.user));
    }
    return items;
}

std::optional<Map> InboxStore::item(const InboxUser& user, std::string_view id) const {
    MutexLock lock(mutex_);
    Statement row(*database_, fromVisible("SELECT id, destination, item, status", "WHERE id = ?3"));
    row.bind(user.lookupType, user.lookupId, id);
    return row.step() ? std::optional(itemOf(row, user)) : std::nullopt;
}

std::int64_t InboxStore::unreadCount(const InboxUser& user, std::int64_t destination) const {
    MutexLock lock(mutex_);
    Statement row(*database_, fromVisible("SELECT COUNT(*)", "WHERE destination = ?3 AND status = 1"));
    row.bind(user.lookupType, user.lookupId, destination);
    return row.step() ? row.integer(0) : 0;
}

bool InboxStore::canSee(const InboxUser& user, std::int64_t destination, std::string_view id) const {
    MutexLock lock(mutex_);
    Statement row(*database_, fromVisible("SELECT 1", "WHERE destination = ?3 AND id = ?4"));
    return row.bind(user.lookupType, user.lookupId, destination, id).step();
}

void InboxStore::setStatus(const InboxUser& user, const std::vector<std::string>& ids, InboxStatus status) {
    MutexLock lock(mutex_);
    database_->transaction([&] {
        for (const std::string& id : ids) {
            Statement(*database_, "INSERT OR REPLACE INTO states VALUES(?, ?, ?, ?)")
                .bind(id, user.lookupType, user.lookupId, static_cast<std::int64_t>(status))
                .run();
        }
    });
}

void InboxStore::markAllAsRead(const InboxUser& user, std::int64_t destination) {
    MutexLock lock(mutex_);
    Statement(*database_, "INSERT OR REPLACE INTO states " +
                              fromVisible("SELECT id, ?1, ?2, 2", "WHERE destination = ?3 AND status = 1"))
        .bind(user.lookupType, user.lookupId, destination)
        .run();
}

List InboxStore::everything() const {
    MutexLock lock(mutex_);
    Statement rows(*database_, "SELECT id, lookup_type, lookup_id, destination, item FROM messages ORDER BY number");
    List list;
    while (rows.step()) {
        Map message{{"item_id", rows.text(0)},
                    {"lookup_type", rows.text(1)},
                    {"lookup_id", rows.text(2)},
                    {"destination_id", rows.integer(3)}};
        if (const auto stored = json::readMap(rows.text(4))) {
            message.merge(*stored);
        }
        List states;
        Statement each(*database_, "SELECT lookup_type, lookup_id, status FROM states WHERE message = ?");
        each.bind(rows.text(0));
        while (each.step()) {
            states.emplace_back(
                Map{{"lookup_type", each.text(0)}, {"lookup_id", each.text(1)}, {"status", each.integer(2)}});
        }
        message.set("states", std::move(states));
        list.emplace_back(std::move(message));
    }
    return list;
}

} // namespace zentavo::devserver
