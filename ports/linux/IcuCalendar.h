#pragma once

#include <memory>
#include <string>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Calendar.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo::linux_port {

/// The calendars and time zones of ICU, which is opened at the first question. The locale chooses the calendar and the
/// first weekday.
class ZENTAVO_EXPORT IcuCalendar final : public platform::Calendar {
public:
    /// `locale` is BCP 47 ("th-TH", "de-u-ca-hebrew"), `timeZone` an IANA name. Empty means the device's, asked for each
    /// time; of the environment LC_TIME counts, as for everything about dates. `log` is told once when ICU is missing.
    explicit IcuCalendar(std::string locale = {}, std::string timeZone = {},
                         std::shared_ptr<platform::SystemLog> log = nullptr);
    ~IcuCalendar() override;

    std::optional<platform::TimePoint> endOfPeriod(platform::CalendarPeriod period,
                                                   platform::TimePoint moment) const override;

private:
    class Open;

    const std::string locale_;
    const std::string timeZone_;
    const std::shared_ptr<platform::SystemLog> log_;
    mutable Mutex mutex_;
    /// The calendar of the last question; opening one costs more than the arithmetic.
    mutable std::unique_ptr<Open> open_ ZENTAVO_GUARDED_BY(mutex_);
    mutable bool hasComplained_ ZENTAVO_GUARDED_BY(mutex_) = false;
};

} // namespace zentavo::linux_port
