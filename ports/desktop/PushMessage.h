#pragma once

#include <cstddef>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/platform/Notification.h"

namespace zentavo::desktop {

/// A push as its sender wrote it, read the way in which a phone's system reads one: what is of the wrong kind says
/// nothing. The sender's own keys are none of the system's business; they stay in the user info.
struct ZENTAVO_EXPORT PushMessage {
    /// A push has no more; it is refused.
    static constexpr std::size_t maximumBytes = 4096;

    /// `userInfo` is all of it. Of "aps" come title, subtitle and body ("alert", a map or a text that is the body),
    /// "category", "sound" (a name, or a map with one) and "badge", where that is an integer of 0 or more.
    platform::NotificationContent content;
    /// Whether a text is to be shown. Without one the push is silent: it may set the number on the icon, and no
    /// extension is asked.
    bool alert = false;
    /// "mutable-content" is 1: the service extension may rewrite it.
    bool mutableContent = false;

    /// `body` is JSON text with an object.
    static Result<PushMessage> read(std::string_view body);
};

} // namespace zentavo::desktop
