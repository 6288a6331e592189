#include "zentavo/push/PushClick.h"

#include <utility>

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

/// The button of `payload` whose action is called `actionIdentifier`; null when it has none.
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

} // namespace

Result<PushClick, DecodingFailure> PushClick::read(const Map& aps, const std::string& actionIdentifier,
                                                   platform::PreferencesProvider& preferences) {
    auto payload = NotificationProperties::read(aps);
    if (!payload) {
        return payload.error();
    }
    const PushChoices choices(preferences, payload->pushId);
    PushClick click;
    if (payload->template_ == PushTemplate::rating) {
        click.rating = choices.rating();
    }
    if (const auto* button = pressedButton(*payload, actionIdentifier); button != nullptr && !button->url.empty()) {
        click.url = button->url;
    } else if (auto chosen = chosenURL(payload->template_.value_or(""), choices); chosen && !chosen->empty()) {
        click.url = std::move(chosen);
    } else {
        click.url = payload->url;
    }
    click.payload = *std::move(payload);
    return click;
}

} // namespace zentavo
