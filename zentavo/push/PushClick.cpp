#include "zentavo/push/PushClick.h"

#include "zentavo/push/PushTemplate.h"

namespace zentavo {

namespace {

/// The user's choice, for the templates whose choices count. An overlay of text keeps its own to itself.
std::optional<std::string> chosenURL(const std::string& name, const PushChoices& choices) {
    if (name == PushTemplate::carousel) {
        return choices.clickedImage();
    }
    if (name == PushTemplate::rating || name == PushTemplate::stylizedBasic || name == PushTemplate::basic ||
        name == PushTemplate::smallImage) {
        return choices.clickedURL();
    }
    return std::nullopt;
}

} // namespace

const ActionButtons::Button* pressedButton(const NotificationProperties& payload, const std::string& actionIdentifier) {
    if (payload.actionButtons) {
        for (const auto* button : {&payload.actionButtons->button1, &payload.actionButtons->button2}) {
            if (*button && (*button)->id == actionIdentifier) {
                return &**button;
            }
        }
    }
    return nullptr;
}

std::optional<std::string> clickedURL(const NotificationProperties& payload, const PushChoices& choices,
                                      const std::string& actionIdentifier) {
    if (const auto* button = pressedButton(payload, actionIdentifier); button != nullptr && !button->url.empty()) {
        return button->url;
    }
    auto chosen = chosenURL(payload.template_.value_or(""), choices);
    return chosen && !chosen->empty() ? chosen : payload.url;
}

} // namespace zentavo
