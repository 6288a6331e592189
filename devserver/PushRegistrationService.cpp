#include "devserver/PushRegistrationService.h"

#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "devserver/BodyChecks.h"
#include "devserver/PushAddress.h"
#include "devserver/Text.h"
#include "zentavo/foundation/Hex.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/UUID.h"

namespace zentavo::devserver {

namespace {

constexpr std::array<MemberRule, 4> identifyRules{{
    {"portal_id", Kind::integer},
    {"identifier", Kind::filledText},
    {"channel", Kind::filledText},
    {"device_id", Kind::text},
}};

constexpr std::array<MemberRule, 1> launchRules{{{"portal_id", Kind::textOrNumber}}};

/// FNV-1a; spreads well and is no secret.
std::uint64_t hash(std::string_view text, std::uint64_t seed) {
    std::uint64_t value = 0xCBF29CE484222325U ^ seed;
    for (const char c : text) {
        value = (value ^ static_cast<std::uint8_t>(c)) * 0x100000001B3U;
    }
    return value;
}

bool isToken(std::string_view text) {
    return text.find_first_not_of("0123456789abcdef") == std::string_view::npos && hex::decode(text).has_value();
}

} // namespace

std::string pushUid(std::string_view token) {
    std::array<std::uint8_t, 16> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(hash(token, i / 8) >> (8 * (i % 8)));
    }
    return uuid::text(uuid::version4(bytes));
}

Result<std::shared_ptr<PushRegistrationService>> PushRegistrationService::open(const std::string& path) {
    auto service = std::make_shared<PushRegistrationService>();
    if (path.empty()) {
        return service;
    }
    auto database =
        Database::open(path, "CREATE TABLE IF NOT EXISTS devices(uid TEXT PRIMARY KEY, device TEXT NOT NULL)");
    if (!database) {
        return database.error();
    }
    MutexLock lock(service->mutex_);
    try {
        Statement row(**database, "SELECT uid, device FROM devices");
        while (row.step()) {
            const auto device = json::readMap(row.text(1));
            if (device && textMember(*device, "identifier") != nullptr) {
                service->devices_[row.text(0)] = *device;
            }
        }
    } catch (const std::runtime_error& error) {
        return Error{"the devices in " + path + " cannot be read: " + error.what()};
    }
    service->database_ = *std::move(database);
    return service;
}

std::vector<Route> PushRegistrationService::routes() const {
    return {{"POST", "/api/app/identify"}, {"POST", "/api/application"}};
}

Answer PushRegistrationService::answer(const IncomingRequest& request, std::string_view path, Twin, const Map& body,
                                       Findings& findings) {
    checkQuery(request.query, {}, findings.problems);
    if (path == "/api/app/identify") {
        return identify(body, findings);
    }
    checkMembers(body, "", launchRules, Others::accepted, findings.problems);
    return {200, {{"status", "ok"}}};
}

Answer PushRegistrationService::identify(const Map& body, Findings& findings) {
    Problems& problems = findings.problems;
    checkMembers(body, "", identifyRules, Others::refused, problems);
    const std::string* token = textMember(body, "identifier");
    if (token != nullptr && !isToken(*token)) {
        problems.add("identifier is " + inQuotes(*token) +
                     "; expected two lower-case hexadecimal digits for each byte");
    }
    const std::string* channel = textMember(body, "channel");
    if (channel != nullptr && *channel != "ios") {
        problems.add("channel is " + inQuotes(*channel) + "; expected \"ios\"");
    }
    if (!problems.empty()) {
        return {};
    }
    const std::string uid = pushUid(*token);
    findings.uid = uid;

    MutexLock lock(mutex_);
    keep(uid, {{"zentavo_apppush_uid", uid},
               {"portal_id", *body.find("portal_id")},
               {"identifier", *token},
               {"device_id", *body.find("device_id")}});
    return {200, {{"data", Map{{"zentavo_apppush_uid", uid}}}}};
}

void PushRegistrationService::keep(const std::string& uid, Map device) {
    if (database_) {
        const auto text = json::write(device);
        Statement(*database_, "INSERT OR REPLACE INTO devices(uid, device) VALUES(?, ?)")
            .bind(uid, text ? *text : throw std::runtime_error(text.error().message))
            .run();
    }
    devices_[uid] = std::move(device);
    if (devices_.size() > maximumDevices) {
        const auto lowest = devices_.begin()->first == uid ? std::next(devices_.begin()) : devices_.begin();
        if (database_) {
            Statement(*database_, "DELETE FROM devices WHERE uid = ?").bind(lowest->first).run();
        }
        devices_.erase(lowest);
    }
}

List PushRegistrationService::devices() const {
    MutexLock lock(mutex_);
    List list;
    for (const auto& [uid, device] : devices_) {
        Map told = device;
        const auto address = PushAddress::ofToken(*textMember(device, "identifier"));
        told.set("reached_at", address ? address->endpoint : "nowhere: " + address.error().message);
        told.set("encrypted", address && address->receiver);
        list.emplace_back(std::move(told));
    }
    return list;
}

} // namespace zentavo::devserver
