#pragma once

#include "zentavo/platform/Clock.h"

namespace zentavo::linux_port {

/// The system's clocks. Cheap: no lock but the C library's own around the time zone.
class ZENTAVO_EXPORT LinuxClock final : public platform::Clock {
public:
    platform::TimePoint now() const override;
    /// Does not advance while the machine sleeps.
    std::chrono::nanoseconds steady() const override;
    /// Follows a time zone that the user changes while the process runs.
    LocalTime local(platform::TimePoint moment) const override;
};

} // namespace zentavo::linux_port
