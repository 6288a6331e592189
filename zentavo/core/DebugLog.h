#pragma once

#include <atomic>
#include <memory>
#include <string_view>

#include "zentavo/platform/Clock.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo {

/// The one channel of the SDK's diagnostics: lines on standard output, and only while a host has switched it on.
/// Any thread. Callers that would have to build their message ask `enabled` first.
class DebugLog {
public:
    DebugLog(std::shared_ptr<platform::Clock> clock, std::shared_ptr<platform::Console> console)
        : clock_(std::move(clock)), console_(std::move(console)) {}

    bool enabled() const noexcept { return enabled_.load(std::memory_order_relaxed); }
    void setEnabled(bool enabled) noexcept { enabled_.store(enabled, std::memory_order_relaxed); }

    /// "<ZENTAVO> - 05.11.26 - 09:03:07: message". One line whatever is in the message.
    void write(std::string_view message) const;

private:
    std::atomic<bool> enabled_{false};
    std::shared_ptr<platform::Clock> clock_;
    std::shared_ptr<platform::Console> console_;
};

} // namespace zentavo
