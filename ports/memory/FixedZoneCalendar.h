#pragma once

#include "zentavo/platform/Calendar.h"

namespace zentavo::testing {

/// The Gregorian calendar at a fixed distance from UTC, by plain arithmetic: no daylight saving, no tables, no locale.
class ZENTAVO_EXPORT FixedZoneCalendar final : public platform::Calendar {
public:
    /// `utcOffset` is local time minus UTC.
    explicit FixedZoneCalendar(std::chrono::minutes utcOffset = std::chrono::minutes(0),
                               std::chrono::weekday firstWeekday = std::chrono::Monday)
        : utcOffset_(utcOffset), firstWeekday_(firstWeekday) {}

    /// None only where the end lies beyond what a `TimePoint` can hold.
    std::optional<platform::TimePoint> endOfPeriod(platform::CalendarPeriod period,
                                                   platform::TimePoint moment) const override;

private:
    const std::chrono::minutes utcOffset_;
    const std::chrono::weekday firstWeekday_;
};

} // namespace zentavo::testing
