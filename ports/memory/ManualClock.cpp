#include "ports/memory/ManualClock.h"

namespace zentavo::testing {

namespace chrono = std::chrono;

ManualClock::ManualClock() : ManualClock(chrono::sys_days(chrono::January / 15 / 2026) + chrono::hours(12)) {}

ManualClock::ManualClock(platform::TimePoint start) : now_(start) {}

platform::TimePoint ManualClock::now() const {
    MutexLock lock(mutex_);
    return now_;
}

chrono::nanoseconds ManualClock::steady() const {
    MutexLock lock(mutex_);
    return steady_;
}

LocalTime ManualClock::local(platform::TimePoint moment) const {
    MutexLock lock(mutex_);
    const auto shown = chrono::floor<chrono::seconds>(moment + utcOffset_);
    lock.unlock();
    const auto midnight = chrono::floor<chrono::days>(shown);
    const chrono::year_month_day day(midnight);
    const chrono::hh_mm_ss time(shown - midnight);
    return LocalTime{static_cast<int>(day.year()),
                     static_cast<int>(static_cast<unsigned>(day.month())),
                     static_cast<int>(static_cast<unsigned>(day.day())),
                     static_cast<int>(time.hours().count()),
                     static_cast<int>(time.minutes().count()),
                     static_cast<int>(time.seconds().count())};
}

void ManualClock::set(platform::TimePoint now) {
    MutexLock lock(mutex_);
    now_ = now;
}

void ManualClock::advance(chrono::nanoseconds duration) {
    MutexLock lock(mutex_);
    now_ += chrono::duration_cast<platform::TimePoint::duration>(duration);
    steady_ += duration;
}

void ManualClock::setUTCOffset(chrono::minutes offset) {
    MutexLock lock(mutex_);
    utcOffset_ = offset;
}

} // namespace zentavo::testing
