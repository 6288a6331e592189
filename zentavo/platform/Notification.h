#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/Value.h"

namespace zentavo::platform {

/// A file that is shown with a notification. Made by `AttachmentFiles::attach`.
struct NotificationAttachment {
    std::string identifier;
    std::string path; ///< absolute

    friend bool operator==(const NotificationAttachment&, const NotificationAttachment&) = default;
};

/// What a notification says and shows. A plain value.
struct NotificationContent {
    /// The `sound` that stands for whatever the system plays for notifications.
    static constexpr const char* defaultSound = "default";

    std::string title;
    std::string subtitle;
    std::string body;
    /// The number for the app's icon, 0 for none; absent leaves it as it is.
    std::optional<std::int64_t> badge;
    std::optional<std::string> sound; ///< a name; absent is silent
    std::string categoryIdentifier;   ///< of a `NotificationCategory`, or empty
    /// What came with the push, "aps" among it.
    Map userInfo;
    std::vector<NotificationAttachment> attachments;

    friend bool operator==(const NotificationContent&, const NotificationContent&) = default;
};

/// A notification that is to be shown.
struct NotificationRequest {
    std::string identifier; ///< a later request with the same one replaces what is shown
    NotificationContent content;

    friend bool operator==(const NotificationRequest&, const NotificationRequest&) = default;
};

/// A notification that is there.
struct Notification {
    NotificationRequest request;

    friend bool operator==(const Notification&, const Notification&) = default;
};

/// The action identifiers of the two things that a user can do with any notification; all others name buttons.
inline constexpr const char* defaultActionIdentifier = "zentavo.notification.default"; ///< opened it
inline constexpr const char* dismissActionIdentifier = "zentavo.notification.dismiss"; ///< put it away

/// What the user did with a notification.
struct NotificationResponse {
    Notification notification;
    std::string actionIdentifier = defaultActionIdentifier;
    /// With which a window may come to the front, where the desktop wants to see that the user has asked for it. May be
    /// empty.
    std::string activationToken = {};

    friend bool operator==(const NotificationResponse&, const NotificationResponse&) = default;
};

/// A button of a kind of notification.
struct NotificationAction {
    std::string identifier;
    std::string title;

    friend bool operator==(const NotificationAction&, const NotificationAction&) = default;
};

/// A kind of notification: its buttons, and who draws it.
struct NotificationCategory {
    std::string identifier;
    std::vector<NotificationAction> actions;

    friend bool operator==(const NotificationCategory&, const NotificationCategory&) = default;
};

/// How a notification is shown while the app is in front. A set of these is a mask.
enum PresentationOption : std::uint32_t {
    presentBadge = 1U << 0U,
    presentSound = 1U << 1U,
    presentAlert = 1U << 2U,
};

} // namespace zentavo::platform
