#pragma once

#include "zentavo/platform/Random.h"

namespace zentavo::linux_port {

/// The kernel's generator. Waits only in the first moments after the machine has booted.
class ZENTAVO_EXPORT LinuxRandom final : public platform::Random {
public:
    /// A system that denies chance is a fatal error: nothing weaker takes its place.
    void fill(std::span<std::uint8_t> bytes) override;
};

} // namespace zentavo::linux_port
