#pragma once

#include <vector>

#include "zentavo/platform/NotificationExtensionContext.h"

namespace zentavo::testing {

/// A content extension's window that only remembers.
class ZENTAVO_EXPORT MemoryExtensionContext final : public platform::NotificationExtensionContext {
public:
    bool performNotificationDefaultAction() override {
        performed_ += able ? 1 : 0;
        return able;
    }
    void setPreferredHeight(double points) override { heights_.push_back(points); }

    /// Whether the system has a way to open the app.
    bool able = true;
    int performed() const noexcept { return performed_; }
    /// Every height asked for so far.
    const std::vector<double>& heights() const noexcept { return heights_; }

private:
    int performed_ = 0;
    std::vector<double> heights_;
};

} // namespace zentavo::testing
