#pragma once

#include <memory>
#include <string>

#include "zentavo/foundation/JSON.h"
#include "zentavo/push/templates/PushTemplateBaseController.h"

namespace zentavo {

/// Pushes as a shop sends them.
struct SampleTemplate {
    /// `members` are added to the payload of a push with the texts of `title` and `body`; JSON without the braces.
    static platform::Notification push(const std::string& members, std::string title = "Winter sale",
                                       std::string body = "Coats, scarves and boots.") {
        const std::string separator = members.empty() ? "" : ",";
        Map aps =
            json::readMap(R"({"pushId": "p1", "url": "https://shop.example/sale")" + separator + members + "}").value();
        platform::NotificationContent content;
        content.title = std::move(title);
        content.body = std::move(body);
        content.userInfo = Map{{"aps", std::move(aps)}};
        return {{"n1", std::move(content)}};
    }
    static std::string button(const std::string& label, const std::string& url) {
        return R"({"id": "b", "label": ")" + label +
               R"(", "iconPath": "", "systemIcon": false, "clickAction": "open", "url": ")" + url + R"("})";
    }
    static std::string buttons(const std::string& first, const std::string& second) {
        return R"("actionButtons": {"button1": )" + first + R"(, "button2": )" + second + "}";
    }
    static std::string slides(const std::vector<std::string>& names) {
        std::string list;
        for (const std::string& name : names) {
            list += std::string(list.empty() ? "" : ",") + R"({"imageUrl": "https://media.example/)" + name +
                    R"(", "action": "open", "url": "https://shop.example/)" + name + R"("})";
        }
        return R"("template": "simple_image_carousel", "imageCarouselSettings": {"slides": [)" + list + "]}";
    }
    static std::string rating(int scale) {
        return R"("template": "rating", "ratingSettings": {"type": "star", "scale": )" + std::to_string(scale) +
               R"(, "selectedIcon": "Star.Selected", "unselectedIcon": "https://media.example/empty.png",
                   "ratingText": ["Poor", "Fair", "Good", "Great", "Perfect"]})";
    }
};

} // namespace zentavo
