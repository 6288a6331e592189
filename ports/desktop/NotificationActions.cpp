#include "ports/desktop/NotificationActions.h"

#include <algorithm>
#include <string_view>

namespace zentavo::desktop {

namespace {

const Map* mapIn(const Map* map, std::string_view key) {
    const Value* value = map != nullptr ? map->find(key) : nullptr;
    return value != nullptr ? value->asMap() : nullptr;
}

std::string textIn(const Map& map, std::string_view key) {
    const Value* value = map.find(key);
    const std::string* text = value != nullptr ? value->asString() : nullptr;
    return text != nullptr ? *text : "";
}

} // namespace

std::vector<DesktopAction> actionsOf(const platform::NotificationContent& content,
                                     const std::vector<platform::NotificationCategory>& categories, bool expandable) {
    std::vector<DesktopAction> actions{{defaultKey, "Open", platform::defaultActionIdentifier}};
    const auto add = [&](const std::string& identifier, const std::string& label) {
        const bool known = std::any_of(actions.begin(), actions.end(),
                                       [&](const DesktopAction& other) { return other.identifier == identifier; });
        if (!known && !identifier.empty() && !label.empty()) {
            actions.push_back({"button" + std::to_string(actions.size()), label, identifier});
        }
    };
    const Map* buttons = mapIn(mapIn(&content.userInfo, "aps"), "actionButtons");
    for (const char* key : {"button1", "button2"}) {
        if (const Map* button = mapIn(buttons, key)) {
            add(textIn(*button, "id"), textIn(*button, "label"));
        }
    }
    for (const platform::NotificationCategory& category : categories) {
        if (category.identifier == content.categoryIdentifier) {
            for (const platform::NotificationAction& action : category.actions) {
                add(action.identifier, action.title);
            }
        }
    }
    if (expandable && content.categoryIdentifier == richCategory) {
        actions.push_back({expandKey, "View", ""});
    }
    return actions;
}

} // namespace zentavo::desktop
