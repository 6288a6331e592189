#include "ports/desktop/ShownNotifications.h"

#include <limits>
#include <optional>

#include "ports/desktop/NotificationCodec.h"
#include "zentavo/foundation/KeyedDecoder.h"

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

/// What is damaged is left out.
std::vector<Kept> read(const std::optional<Value>& stored) {
    std::vector<Kept> kept;
    const List* list = stored ? stored->asList() : nullptr;
    if (list == nullptr || list->size() > ShownNotifications::maximumCount) {
        return kept;
    }
    for (const Value& each : *list) {
        const Map* map = each.asMap();
        if (map == nullptr) {
            continue;
        }
        KeyedDecoder decoder(*map);
        Kept one;
        one.server = decoder.string("server");
        const std::int64_t id = decoder.integer("id");
        one.notification = decoder.string("notification");
        one.actions = decoder.nestedList("actions", [](KeyedDecoder& action) {
            return DesktopAction{action.string("key"), "", action.string("identifier")};
        });
        if (!decoder.failure() && id > 0 && id <= std::numeric_limits<std::uint32_t>::max()) {
            one.id = static_cast<std::uint32_t>(id);
            kept.push_back(std::move(one));
        }
    }
    return kept;
}

std::optional<Value> write(const std::vector<Kept>& kept) {
    if (kept.empty()) {
        return std::nullopt;
    }
    List list;
    for (const Kept& each : kept) {
        List actions;
        for (const DesktopAction& action : each.actions) {
            actions.push_back(Map{{"key", action.key}, {"identifier", action.identifier}});
        }
        list.push_back(Map{{"server", each.server},
                           {"id", static_cast<std::int64_t>(each.id)},
                           {"notification", each.notification},
                           {"actions", std::move(actions)}});
    }
    return Value(std::move(list));
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
            if (all.size() == maximumCount) {
                all.erase(all.begin());
            }
            all.push_back(kept);
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
