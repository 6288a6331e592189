#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "zentavo/foundation/Result.h"
#include "zentavo/push/NotificationProperties.h"
#include "zentavo/push/PushChoices.h"

namespace zentavo {

/// What a click on a push asks for.
struct PushClick {
    NotificationProperties payload;
    /// What the user chose in a template that asks for a rating; 0 where nothing was chosen or asked for.
    std::int64_t rating = 0;
    /// What the click opens: the pressed button's own URL, else what the user chose inside the rich template, else the
    /// payload's. Whether it is an URL is not looked at. None when there is nothing to open.
    std::optional<std::string> url;

    /// `actionIdentifier` is the button's, or one of the system's. Any thread; waits for the disk, where choices are.
    static Result<PushClick, DecodingFailure> read(const Map& aps, const std::string& actionIdentifier,
                                                   platform::PreferencesProvider& preferences);
};

} // namespace zentavo
