#pragma once

namespace zentavo {

/// Names of rich layouts, as the payload's "template" gives them.
struct PushTemplate {
    static constexpr const char* carousel = "simple_image_carousel";
    static constexpr const char* rating = "rating";
    static constexpr const char* stylizedBasic = "stylized_basic";
    static constexpr const char* basic = "basic_notification";
    static constexpr const char* smallImage = "small_image";
    static constexpr const char* textOverlay = "text_overlay";
};

} // namespace zentavo
