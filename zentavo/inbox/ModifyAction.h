#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace zentavo {

/// What can be done to a message. The numbers are what the service reads and writes, also as a message's status.
enum class ModifyAction : int { unread = 1, read = 2, remove = 3 };

inline constexpr std::array<ModifyAction, 3> allModifyActions{ModifyAction::unread, ModifyAction::read,
                                                              ModifyAction::remove};

/// The action of that number; none for any other.
constexpr std::optional<ModifyAction> modifyAction(std::int64_t rawValue) noexcept {
    for (const ModifyAction action : allModifyActions) {
        if (static_cast<std::int64_t>(action) == rawValue) {
            return action;
        }
    }
    return std::nullopt;
}

} // namespace zentavo
