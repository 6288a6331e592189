#pragma once

#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/platform/Notification.h"

namespace zentavo::desktop {

/// Notifications as text, for the way between an app's programs. Any thread.
namespace codec {

/// More than this is refused, either way.
inline constexpr std::size_t maximumBytes = 256U << 10U;

ZENTAVO_EXPORT Result<std::string> write(const platform::Notification& notification);
/// Strict: what another program sends is not to be trusted. Without an identifier it is no notification.
ZENTAVO_EXPORT Result<platform::Notification> readNotification(std::string_view text);

/// A response on its way. Who sends it again, not knowing whether it has arrived, gives it the same `id`; without one it
/// is told as often as it comes.
struct SentResponse {
    platform::NotificationResponse response;
    std::string id = {};

    friend bool operator==(const SentResponse&, const SentResponse&) = default;
};
inline constexpr std::size_t maximumIdBytes = 64;

ZENTAVO_EXPORT Result<std::string> write(const platform::NotificationResponse& response, const std::string& id = {});
ZENTAVO_EXPORT Result<SentResponse> readResponse(std::string_view text);

} // namespace codec
} // namespace zentavo::desktop
