#pragma once

#include "zentavo/push/NotificationProperties.h"

namespace zentavo {

// Every field of the payload's records with its key, in the order in which they are read: one list for reading, writing
// and for those who ask which keys there are. `field(key, member)` is called for each.

template <class Field>
void visitFields(Badge& badge, Field&& field) {
    field("type", badge.type);
    field("value", badge.value);
}

template <class Field>
void visitFields(ActionButtons::Button& button, Field&& field) {
    field("id", button.id);
    field("label", button.label);
    field("iconPath", button.iconPath);
    field("systemIcon", button.systemIcon);
    field("clickAction", button.clickAction);
    field("url", button.url);
}

template <class Field>
void visitFields(ActionButtons& buttons, Field&& field) {
    field("button1", buttons.button1);
    field("button2", buttons.button2);
}

template <class Field>
void visitFields(RatingSettings& settings, Field&& field) {
    field("type", settings.type);
    field("scale", settings.scale);
    field("selectedIcon", settings.selectedIcon);
    field("unselectedIcon", settings.unselectedIcon);
    field("ratingText", settings.ratingText);
}

template <class Field>
void visitFields(SmallImageSetting& setting, Field&& field) {
    field("imageAlignment", setting.imageAlignment);
}

template <class Field>
void visitFields(Slide& slide, Field&& field) {
    field("imageUrl", slide.imageUrl);
    field("action", slide.action);
    field("url", slide.url);
}

template <class Field>
void visitFields(ImageCarouselSettings& settings, Field&& field) {
    field("slides", settings.slides);
}

template <class Field>
void visitFields(NotificationProperties& payload, Field&& field) {
    field("mutable-content", payload.mutableContent);
    field("urlImageString", payload.urlImageString);
    field("badge", payload.badge);
    field("pushId", payload.pushId); // before its place in the record
    field("sound", payload.sound);
    field("category", payload.category);
    field("content-available", payload.contentAvailable);
    field("relevance-score", payload.relevanceScore);
    field("target-content-id", payload.targetContentId);
    field("trackingClickUrl", payload.trackingClickUrl);
    field("url", payload.url);
    field("leadSourceId", payload.leadSourceId);
    field("storyId", payload.storyId);
    field("campaignId", payload.campaignId);
    field("variantId", payload.variantId);
    field("actionButtons", payload.actionButtons);
    field("additionalData", payload.additionalData);
    field("backgroundColor", payload.backgroundColor);
    field("template", payload.template_);
    field("ratingSettings", payload.ratingSettings);
    field("smallImageSettings", payload.smallImageSettings);
    field("imageCarouselSettings", payload.imageCarouselSettings);
}

} // namespace zentavo
