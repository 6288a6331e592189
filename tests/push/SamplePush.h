#pragma once

#include "zentavo/foundation/JSON.h"

namespace zentavo {

/// A payload with a text for the system and every field of ours, each different from its default.
inline Map fullPayload() {
    return json::readMap(R"({
        "alert": {"title": "Winter sale"},
        "mutable-content": 1,
        "urlImageString": "https://media.shop.example/coat.jpg",
        "badge": {"type": "increase", "value": 2},
        "pushId": "p1",
        "sound": "bell.wav",
        "category": "ZentavoNotificationContent",
        "content-available": true,
        "relevance-score": 7,
        "target-content-id": "t7",
        "trackingClickUrl": "https://track.shop.example/c/p1",
        "url": "https://shop.example/sale",
        "leadSourceId": "l1",
        "storyId": "s1",
        "campaignId": "c1",
        "variantId": "v1",
        "actionButtons": {
            "button1": {"id": "buy", "label": "Buy", "iconPath": "cart", "systemIcon": true, "clickAction": "OPEN_URL",
                        "url": "https://shop.example/buy"},
            "button2": {"id": "later", "label": "Later", "iconPath": "https://media.shop.example/clock.png",
                        "systemIcon": false, "clickAction": "DISMISS", "url": "https://shop.example/later"}
        },
        "additionalData": {"screen": "sale", "size": "42"},
        "backgroundColor": "#FFEEDD",
        "template": "rating",
        "ratingSettings": {"type": "star", "scale": 5, "selectedIcon": "Star.Selected",
                           "unselectedIcon": "Star.Unselected", "ratingText": ["bad", "fine"]},
        "smallImageSettings": {"imageAlignment": "left"},
        "imageCarouselSettings": {"slides": [
            {"imageUrl": "https://media.shop.example/1.jpg", "action": "OPEN_URL", "url": "https://shop.example/1"},
            {"imageUrl": "https://media.shop.example/2.jpg", "action": "OPEN_URL", "url": "https://shop.example/2"}
        ]}
    })")
        .value();
}

/// The map that a path like "actionButtons.button1" or "imageCarouselSettings.slides[1]" names; empty names `map`.
inline Map& at(Map& map, std::string_view path) {
    Map* place = &map;
    while (!path.empty()) {
        const std::size_t dot = std::min(path.find('.'), path.size());
        std::string_view key = path.substr(0, dot);
        path.remove_prefix(std::min(dot + 1, path.size()));
        const std::size_t bracket = key.find('[');
        Value* member = place->find(key.substr(0, bracket));
        if (bracket != std::string_view::npos) {
            member = &(*member->asList())[static_cast<std::size_t>(key[bracket + 1] - '0')];
        }
        place = member->asMap();
    }
    return *place;
}

} // namespace zentavo
