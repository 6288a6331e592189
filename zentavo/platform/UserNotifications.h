#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "zentavo/foundation/Export.h"

namespace zentavo::platform {

enum class AuthorizationStatus { notDetermined = 0, denied = 1, authorized = 2, provisional = 3, ephemeral = 4 };

/// A set of these is a mask.
enum AuthorizationOption : std::uint32_t {
    authorizeBadge = 1U << 0U,
    authorizeSound = 1U << 1U,
    authorizeAlert = 1U << 2U,
};

/// The system's notification centre. Completions are called exactly once, on a thread of the port's choice, never
/// inside the call.
class ZENTAVO_EXPORT UserNotifications {
public:
    virtual ~UserNotifications() = default;

    virtual void settings(std::function<void(AuthorizationStatus)> completion) = 0;
    /// Asks the user, where the system does that. `error` says why the question could not be put.
    virtual void
    requestAuthorization(std::uint32_t options,
                         std::function<void(bool granted, std::optional<std::string> error)> completion) = 0;
};

} // namespace zentavo::platform
