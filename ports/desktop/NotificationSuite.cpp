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

std::shared_ptr<NotificationSuite> NotificationSuite::open(platform::PreferencesProvider& preferences,
                                                           const std::string& app) {
    auto suite = preferences.suite(app + ".Notifications");
    return suite ? std::make_shared<NotificationSuite>(std::move(suite)) : nullptr;
}

std::int64_t NotificationSuite::badge() const { return suite_->integer(badgeKey); }

void NotificationSuite::setBadge(std::int64_t count) const {
    if (count > 0) {
        suite_->set(badgeKey, count);
    } else {
        suite_->remove(badgeKey);
    }
}

void NotificationSuite::addCategory(const platform::NotificationCategory& category) const {
    suite_->update(categoriesKey, [category](const std::optional<Value>& stored) {
        auto categories = read(stored);
        std::erase_if(categories, [&](const auto& other) { return other.identifier == category.identifier; });
        if (categories.size() == maximumCategories) {
            categories.erase(categories.begin());
        }
        categories.push_back(category);
        return std::optional<Value>(write(categories));
    });
}

std::vector<platform::NotificationCategory> NotificationSuite::categories() const {
    return read(suite_->object(categoriesKey));
}

} // namespace zentavo::desktop
