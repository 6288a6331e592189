#include "ports/desktop/ShownNotifications.h"

#include <limits>
#include <optional>

#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/StoredRecords.h"

namespace zentavo::desktop {

namespace {

constexpr const char* key = "ZentavoShownNotifications";

/// As it is stored; what it says is read by who takes it up.
struct Kept {
    std::string server;
    std::uint32_t id = 0;
    std::string notification;
    std::vector<DesktopAction> actions;
};

std::vector<Kept> read(const std::optional<Value>& stored) {
    return readRecords(stored, ShownNotifications::maximumCount, [](KeyedDecoder& decoder) {
        Kept kept;
        kept.server = decoder.string("server");
        const std::int64_t id = decoder.integer("id");
        kept.notification = decoder.string("notification");
        kept.actions = decoder.nestedList("actions", [](KeyedDecoder& action) {
            return DesktopAction{action.string("key"), "", action.string("identifier")};
        });
        if (id <= 0 || id > std::numeric_limits<std::uint32_t>::max()) {
            decoder.fail("id", "is none of the service's");
        }
        kept.id = static_cast<std::uint32_t>(id);
        return kept;
    });
}

std::optional<Value> write(const std::vector<Kept>& kept) {
    return writeRecords(kept, [](const Kept& each) {
        List actions;
        for (const DesktopAction& action : each.actions) {
            actions.push_back(Map{{"key", action.key}, {"identifier", action.identifier}});
        }
        return Map{{"server", each.server},
                   {"id", static_cast<std::int64_t>(each.id)},
                   {"notification", each.notification},
                   {"actions", std::move(actions)}};
    });
}

} // namespace

void ShownNotifications::add(const std::string& server, const Entry& entry) const {
    const auto text = codec::write(entry.notification);
    if (!text || text->size() > maximumBytes) {
        return;
    }
    preferences_->standard()->update(
        key, [kept = Kept{server, entry.id, *text, entry.actions}](const std::optional<Value>& stored) {
            auto all = read(stored);
            std::erase_if(all, [&](const Kept& other) { return other.id == kept.id; });
            addRecord(all, kept, maximumCount);
            return write(all);
        });
}

void ShownNotifications::remove(std::uint32_t id) const {
    preferences_->standard()->update(key, [id](const std::optional<Value>& stored) {
        auto all = read(stored);
        std::erase_if(all, [&](const Kept& each) { return each.id == id; });
        return write(all);
    });
}

ShownNotifications::Left ShownNotifications::takeUp(const std::string& server) const {
    Left left;
    bool isOver = false;
    for (Kept& each : read(preferences_->standard()->object(key))) {
        auto notification = codec::readNotification(each.notification);
        isOver = isOver || each.server != server;
        if (notification && each.server == server) {
            left.up.push_back({each.id, *std::move(notification), std::move(each.actions)});
        } else if (notification) {
            left.gone.push_back(*std::move(notification));
        }
    }
    if (isOver) {
        preferences_->standard()->update(key, [server](const std::optional<Value>& stored) {
            auto all = read(stored);
            std::erase_if(all, [&](const Kept& each) { return each.server != server; });
            return write(all);
        });
    }
    return left;
}

} // namespace zentavo::desktop
