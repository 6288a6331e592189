#pragma once

#include <chrono>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Clock.h"

namespace zentavo::testing {

/// A clock that stands still until the test turns it. Any thread.
class ZENTAVO_EXPORT ManualClock : public platform::Clock {
public:
    /// Starts at 2026-01-15 12:00:00 UTC unless told otherwise; the steady clock starts at 0.
    ManualClock();
    explicit ManualClock(platform::TimePoint start);

    platform::TimePoint now() const override;
    std::chrono::nanoseconds steady() const override;
    LocalTime local(platform::TimePoint moment) const override;

    /// The user sets the wall clock; the steady clock does not notice.
    void set(platform::TimePoint now);
    /// Time passes, on both clocks. `ManualQueues::advance` also runs what falls due; this does not.
    void advance(std::chrono::nanoseconds duration);
    /// What `local` adds to UTC; 0 at first.
    void setUTCOffset(std::chrono::minutes offset);

private:
    mutable Mutex mutex_;
    platform::TimePoint now_ ZENTAVO_GUARDED_BY(mutex_);
    std::chrono::nanoseconds steady_ ZENTAVO_GUARDED_BY(mutex_){0};
    std::chrono::minutes utcOffset_ ZENTAVO_GUARDED_BY(mutex_){0};
};

} // namespace zentavo::testing
