#pragma once

#include <chrono>

#include "zentavo/foundation/DateText.h"
#include "zentavo/foundation/Export.h"

namespace zentavo::platform {

/// A moment of civil time. It may jump when the user sets the clock.
using TimePoint = std::chrono::system_clock::time_point;

/// What time it is. Nothing in the SDK asks the system directly, so a test can turn the clock. Any thread.
class ZENTAVO_EXPORT Clock {
public:
    virtual ~Clock() = default;

    virtual TimePoint now() const = 0;
    /// Time since some fixed moment; never goes back. For measuring and for delays.
    virtual std::chrono::nanoseconds steady() const = 0;
    /// `moment` on the wall clock of the device's current time zone.
    virtual LocalTime local(TimePoint moment) const = 0;

    /// Seconds since 1970-01-01 UTC, with the fraction.
    double secondsSince1970() const { return std::chrono::duration<double>(now().time_since_epoch()).count(); }
};

} // namespace zentavo::platform
