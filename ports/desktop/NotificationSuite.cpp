#include "ports/desktop/NotificationSuite.h"

#include <optional>
#include <string_view>

#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo::desktop {

namespace {

constexpr const char* badgeKey = "ZentavoBadge";
constexpr const char* categoriesKey = "ZentavoCategories";

/// What is damaged is left out.
std::vector<platform::NotificationCategory> read(const std::optional<Value>& stored) {
    std::vector<platform::NotificationCategory> categories;
    const List* list = stored ? stored->asList() : nullptr;
    if (list == nullptr || list->size() > NotificationSuite::maximumCategories) {
        return categories;
    }
    for (const Value& each : *list) {
        const Map* map = each.asMap();
        if (map == nullptr) {
            continue;
        }
        KeyedDecoder decoder(*map);
        platform::NotificationCategory category;
        category.identifier = decoder.string("identifier");
        category.actions = decoder.nestedList("actions", [](KeyedDecoder& action) {
            return platform::NotificationAction{action.string("identifier"), action.string("title")};
        });
        if (!decoder.failure()) {
            categories.push_back(std::move(category));
        }
    }
    return categories;
}

Value write(const std::vector<platform::NotificationCategory>& categories) {
    List list;
    for (const auto& category : categories) {
        List actions;
        for (const auto& action : category.actions) {
            actions.push_back(Map{{"identifier", action.identifier}, {"title", action.title}});
        }
        list.push_back(Map{{"identifier", category.identifier}, {"actions", std::move(actions)}});
    }
    return list;
}

} // namespace

std::int64_t NotificationSuite::badge() const {
    const auto kept = suite();
    return kept ? kept->integer(badgeKey) : 0;
}

void NotificationSuite::setBadge(std::int64_t count) const {
    const auto kept = suite();
    if (kept && count > 0) {
        kept->set(badgeKey, count);
    } else if (kept) {
        kept->remove(badgeKey);
    }
}

void NotificationSuite::addCategory(const platform::NotificationCategory& category) const {
    const auto kept = suite();
    if (!kept) {
        return;
    }
    kept->update(categoriesKey, [category, side = side_](const std::optional<Value>& stored) {
        auto categories = read(stored);
        const auto known = std::find_if(categories.begin(), categories.end(),
                                        [&](const auto& other) { return other.identifier == category.identifier; });
        if (known != categories.end()) {
            if (side == Side::notificationService) {
                return stored;
            }
            categories.erase(known);
        }
        if (categories.size() == maximumCategories) {
            categories.erase(categories.begin());
        }
        categories.push_back(category);
        return std::optional<Value>(write(categories));
    });
}

std::vector<platform::NotificationCategory> NotificationSuite::categories() const {
    const auto kept = suite();
    return kept ? read(kept->object(categoriesKey)) : std::vector<platform::NotificationCategory>();
}

} // namespace zentavo::desktop
