#include "devserver/EndpointStore.h"

#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include <openssl/rand.h>

#include "zentavo/foundation/Hex.h"

namespace zentavo::devserver {

namespace {

constexpr const char* schema = R"(
CREATE TABLE IF NOT EXISTS endpoints(number INTEGER PRIMARY KEY, token TEXT NOT NULL UNIQUE, service TEXT NOT NULL,
  description TEXT NOT NULL, vapid TEXT NOT NULL, version INTEGER NOT NULL, id TEXT NOT NULL UNIQUE);
)";

std::string newId() {
    std::array<std::uint8_t, 16> bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
        throw std::runtime_error("the system gives no random bytes");
    }
    return hex::encode(bytes);
}

} // namespace

Result<std::unique_ptr<EndpointStore>> EndpointStore::open(const std::string& path) {
    auto database = Database::open(path, schema);
    if (!database) {
        return database.error();
    }
    return std::unique_ptr<EndpointStore>(new EndpointStore(*std::move(database)));
}

std::vector<EndpointStore::Registration> EndpointStore::where(std::string_view condition,
                                                              std::string_view value) const {
    Statement statement(*database_, "SELECT token, service, description, vapid, version, id FROM endpoints WHERE " +
                                        std::string(condition) + " = ? ORDER BY number");
    statement.bind(value);
    std::vector<Registration> list;
    while (statement.step()) {
        list.push_back({statement.text(0), statement.text(1), statement.text(2), statement.text(3),
                        static_cast<int>(statement.integer(4)), statement.text(5)});
    }
    return list;
}

Result<EndpointStore::Registration> EndpointStore::add(Registration registration) {
    MutexLock lock(mutex_);
    const auto known = where("token", registration.token);
    if (!known.empty()) {
        if (known.front().service != registration.service) {
            return Error{"another app has this token"};
        }
        registration.id = known.front().id;
        Statement(*database_, "UPDATE endpoints SET description = ?, vapid = ?, version = ? WHERE token = ?")
            .bind(registration.description, registration.vapid, std::int64_t{registration.version}, registration.token)
            .run();
        return registration;
    }
    if (where("''", "").size() >= maximum) {
        return Error{"there are " + std::to_string(maximum) + " registrations already"};
    }
    registration.id = newId();
    Statement(*database_, "INSERT INTO endpoints(token, service, description, vapid, version, id) VALUES(?,?,?,?,?,?)")
        .bind(registration.token, registration.service, registration.description, registration.vapid,
              std::int64_t{registration.version}, registration.id)
        .run();
    return registration;
}

std::optional<EndpointStore::Registration> EndpointStore::find(std::string_view token) const {
    MutexLock lock(mutex_);
    auto found = where("token", token);
    return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

std::optional<EndpointStore::Registration> EndpointStore::at(std::string_view id) const {
    MutexLock lock(mutex_);
    auto found = where("id", id);
    return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

std::optional<EndpointStore::Registration> EndpointStore::renew(std::string_view token) {
    MutexLock lock(mutex_);
    Statement(*database_, "UPDATE endpoints SET id = ? WHERE token = ?").bind(newId(), token).run();
    auto found = where("token", token);
    return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

bool EndpointStore::remove(std::string_view token) {
    MutexLock lock(mutex_);
    const bool known = !where("token", token).empty();
    Statement(*database_, "DELETE FROM endpoints WHERE token = ?").bind(token).run();
    return known;
}

std::vector<EndpointStore::Registration> EndpointStore::all() const {
    MutexLock lock(mutex_);
    return where("''", "");
}

} // namespace zentavo::devserver
