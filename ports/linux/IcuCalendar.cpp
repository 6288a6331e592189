#include "ports/linux/IcuCalendar.h"

#include <array>
#include <cmath>
#include <utility>

#include "ports/linux/IcuLibrary.h"
#include "ports/linux/SystemSettings.h"

namespace zentavo::linux_port {

using platform::CalendarPeriod;
using platform::TimePoint;

/// A calendar of ICU's for one locale and time zone. One thread at a time.
class IcuCalendar::Open {
public:
    Open(const IcuLibrary& icu, std::string locale, std::string timeZone)
        : icu_(icu), locale_(std::move(locale)), timeZone_(std::move(timeZone)) {
        std::array<char, 160> name{};
        icu_.forLanguageTag(locale_.c_str(), name.data(), name.size() - 1, nullptr, &error_);
        const std::u16string zone(timeZone_.begin(), timeZone_.end());
        calendar_ = icu_.open(zone.c_str(), static_cast<std::int32_t>(zone.size()), name.data(), UCAL_DEFAULT, &error_);
        if (calendar_ != nullptr) {
            // A day that begins twice begins the first time.
            icu_.setAttribute(calendar_, UCAL_REPEATED_WALL_TIME, UCAL_WALLTIME_FIRST);
        }
    }
    ~Open() {
        if (calendar_ != nullptr) {
            icu_.close(calendar_);
        }
    }
    Open(const Open&) = delete;
    Open& operator=(const Open&) = delete;

    bool isFor(const std::string& locale, const std::string& timeZone) const {
        return locale == locale_ && timeZone == timeZone_;
    }

    /// Both in milliseconds since 1970.
    std::optional<double> end(CalendarPeriod period, double moment) {
        icu_.setMillis(calendar_, moment, &error_);
        if (period == CalendarPeriod::hour) {
            // Not by fields: in an hour that comes twice they do not say which one is meant.
            constexpr double hour = 3'600'000;
            const double offset = field(UCAL_ZONE_OFFSET) + field(UCAL_DST_OFFSET);
            moment = (std::floor((moment + offset) / hour) + 1) * hour - offset;
        } else {
            moveToNext(period);
            for (const UCalendarDateFields part : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND}) {
                icu_.set(calendar_, part, 0);
            }
            moment = icu_.getMillis(calendar_, &error_);
        }
        return U_SUCCESS(error_) ? std::optional(moment) : std::nullopt;
    }

private:
    std::int32_t field(UCalendarDateFields name) { return icu_.get(calendar_, name, &error_); }

    /// To some moment on the first day of the next period.
    void moveToNext(CalendarPeriod period) {
        switch (period) {
        case CalendarPeriod::week: {
            const std::int32_t first = icu_.getAttribute(calendar_, UCAL_FIRST_DAY_OF_WEEK);
            const std::int32_t daysIn = (field(UCAL_DAY_OF_WEEK) - first + 7) % 7;
            icu_.add(calendar_, UCAL_DAY_OF_MONTH, 7 - daysIn, &error_);
            break;
        }
        case CalendarPeriod::month:
            icu_.add(calendar_, UCAL_MONTH, 1, &error_);
            icu_.set(calendar_, UCAL_DAY_OF_MONTH, 1);
            break;
        case CalendarPeriod::year:
            // The year that counts on across eras.
            icu_.add(calendar_, UCAL_EXTENDED_YEAR, 1, &error_);
            icu_.set(calendar_, UCAL_DAY_OF_YEAR, 1);
            break;
        default:
            icu_.add(calendar_, UCAL_DAY_OF_MONTH, 1, &error_);
        }
    }

    const IcuLibrary& icu_;
    const std::string locale_;
    const std::string timeZone_;
    UCalendar* calendar_ = nullptr;
    /// ICU does nothing once this says failure, so one look at the end is enough.
    UErrorCode error_ = U_ZERO_ERROR;
};

IcuCalendar::IcuCalendar(std::string locale, std::string timeZone, std::shared_ptr<platform::SystemLog> log)
    : locale_(std::move(locale)), timeZone_(std::move(timeZone)), log_(std::move(log)) {}

IcuCalendar::~IcuCalendar() = default;

std::optional<TimePoint> IcuCalendar::endOfPeriod(CalendarPeriod period, TimePoint moment) const {
    using namespace std::chrono;
    std::string locale = locale_.empty() ? localeOf("LC_TIME") : locale_;
    std::string timeZone = timeZone_.empty() ? timeZoneName() : timeZone_;
    const auto start = static_cast<double>(floor<milliseconds>(moment).time_since_epoch().count());
    MutexLock lock(mutex_);
    if (!open_ || !open_->isFor(locale, timeZone)) {
        const IcuLibrary* icu = IcuLibrary::shared();
        if (icu == nullptr) {
            const bool isNews = !std::exchange(hasComplained_, true);
            lock.unlock();
            if (isNews && log_) {
                log_->write(platform::LogLevel::error, "calendar: the ICU library is missing, no period can be told");
            }
            return std::nullopt;
        }
        open_ = std::make_unique<Open>(*icu, std::move(locale), std::move(timeZone));
    }
    const auto end = open_->end(period, start);
    if (!end) {
        open_.reset();
        return std::nullopt;
    }
    constexpr auto latest = duration_cast<milliseconds>(TimePoint::max().time_since_epoch());
    if (*end <= start || *end > static_cast<double>(latest.count())) {
        return std::nullopt;
    }
    return TimePoint(milliseconds(static_cast<std::int64_t>(*end)));
}

} // namespace zentavo::linux_port
