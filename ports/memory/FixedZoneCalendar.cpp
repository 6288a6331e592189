#include "ports/memory/FixedZoneCalendar.h"

namespace zentavo::testing {

std::optional<platform::TimePoint> FixedZoneCalendar::endOfPeriod(platform::CalendarPeriod period,
                                                                  platform::TimePoint moment) const {
    using namespace std::chrono;
    // Whole seconds from here on: near the ends of a TimePoint's range its own ticks would overflow.
    const sys_seconds local = floor<seconds>(moment) + utcOffset_;
    const sys_days today = floor<days>(local);
    const year_month_day date(today);
    sys_seconds end;
    switch (period) {
    case platform::CalendarPeriod::hour:
        end = floor<hours>(local) + hours(1);
        break;
    case platform::CalendarPeriod::day:
        end = today + days(1);
        break;
    case platform::CalendarPeriod::week:
        end = today + days(7) - (weekday(today) - firstWeekday_);
        break;
    case platform::CalendarPeriod::month:
        end = sys_days((date.year() / date.month() + months(1)) / 1);
        break;
    case platform::CalendarPeriod::year:
        end = sys_days((date.year() + years(1)) / January / 1);
        break;
    }
    end -= utcOffset_;
    if (end > floor<seconds>(platform::TimePoint::max())) {
        return std::nullopt;
    }
    return platform::TimePoint(end);
}

} // namespace zentavo::testing
