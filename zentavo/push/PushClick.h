#pragma once

#include <optional>
#include <string>

#include "zentavo/push/NotificationProperties.h"
#include "zentavo/push/PushChoices.h"

namespace zentavo {

/// The button of `payload` whose action is called `actionIdentifier`; null when it has none.
const ActionButtons::Button* pressedButton(const NotificationProperties& payload, const std::string& actionIdentifier);

/// What the click opens: the pressed button's own URL, else what the user chose inside the rich template, else the
/// payload's. Whether it is an URL is not looked at. None when there is nothing to open.
std::optional<std::string> clickedURL(const NotificationProperties& payload, const PushChoices& choices,
                                      const std::string& actionIdentifier);

} // namespace zentavo
