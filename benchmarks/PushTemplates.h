#pragma once

#include <string>

#include <zentavo/foundation/JSON.h>
#include <zentavo/push/templates/PushTemplateBaseController.h>

namespace zentavo::bench {

/// A push for each rich template, of the size that shops send.
inline platform::Notification push(const std::string& name) {
    std::string aps = R"({"pushId": "p1", "template": ")" + name + R"(", "url": "https://shop.example/sale",
        "urlImageString": "https://media.example/coat.png",
        "actionButtons": {
            "button1": {"id": "a", "label": "Shop now", "iconPath": "", "systemIcon": false, "clickAction": "open",
                        "url": "https://shop.example/1"},
            "button2": {"id": "b", "label": "Later", "iconPath": "", "systemIcon": false, "clickAction": "open",
                        "url": "https://shop.example/2"}},
        "ratingSettings": {"type": "star", "scale": 5, "selectedIcon": "Star.Selected",
                           "unselectedIcon": "Star.Unselected"},
        "imageCarouselSettings": {"slides": [)";
    for (int i = 0; i < 5; ++i) {
        aps += std::string(i > 0 ? "," : "") + R"({"imageUrl": "https://media.example/)" + std::to_string(i) +
               R"(.png", "action": "open", "url": "https://shop.example/"})";
    }
    aps += "]}}";
    platform::NotificationContent content;
    content.title = "Twenty per cent off everything that is warm, from coats to boots and blankets";
    content.subtitle = "Outdoor";
    content.body = "Only until Sunday: coats, scarves and boots. Your size is still there.";
    content.userInfo = Map{{"aps", json::readMap(aps).value()}};
    return {{"n1", std::move(content)}};
}

inline constexpr const char* templates[] = {"stylized_basic", "small_image", "text_overlay", "rating",
                                            "simple_image_carousel"};

} // namespace zentavo::bench
