#include "ports/desktop/NotificationSuite.h"

#include <optional>
#include <string_view>

#include "ports/desktop/StoredRecords.h"

namespace zentavo::desktop {

namespace {

constexpr const char* badgeKey = "ZentavoBadge";
constexpr const char* categoriesKey = "ZentavoCategories";

std::vector<platform::NotificationCategory> read(const std::optional<Value>& stored) {
    return readRecords(stored, NotificationSuite::maximumCategories, [](KeyedDecoder& decoder) {
        platform::NotificationCategory category;
        category.identifier = decoder.string("identifier");
        category.actions = decoder.nestedList("actions", [](KeyedDecoder& action) {
            return platform::NotificationAction{action.string("identifier"), action.string("title")};
        });
        return category;
    });
}

std::optional<Value> write(const std::vector<platform::NotificationCategory>& categories) {
    return writeRecords(categories, [](const platform::NotificationCategory& category) {
        List actions;
        for (const auto& action : category.actions) {
            actions.push_back(Map{{"identifier", action.identifier}, {"title", action.title}});
        }
        return Map{{"identifier", category.identifier}, {"actions", std::move(actions)}};
    });
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
        addRecord(categories, category, maximumCategories);
        return write(categories);
    });
}

std::vector<platform::NotificationCategory> NotificationSuite::categories() const {
    const auto kept = suite();
    return kept ? read(kept->object(categoriesKey)) : std::vector<platform::NotificationCategory>();
}

} // namespace zentavo::desktop
