#pragma once

#include <optional>

#include "zentavo/platform/Clock.h"

namespace zentavo::platform {

enum class CalendarPeriod { hour, day, week, month, year };

/// The user's calendar: its system of years, first weekday and time zone are the device's. Any thread; the first call
/// may take tens of milliseconds and is best made off the host's threads.
class ZENTAVO_EXPORT Calendar {
public:
    virtual ~Calendar() = default;

    /// When the period that holds `moment` is over: the first moment of the next one. Days of 23 and 25 hours, repeated
    /// and skipped hours and skipped midnights are taken as the time zone has them. None when the calendar cannot tell.
    virtual std::optional<TimePoint> endOfPeriod(CalendarPeriod period, TimePoint moment) const = 0;
};

} // namespace zentavo::platform
