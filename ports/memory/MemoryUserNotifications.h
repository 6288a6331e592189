#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/UserNotifications.h"

namespace zentavo::testing {

/// A notification centre whose user is the test. Any thread.
class ZENTAVO_EXPORT MemoryUserNotifications : public platform::UserNotifications {
public:
    /// Completions run on `queue`.
    explicit MemoryUserNotifications(std::shared_ptr<platform::DispatchQueue> queue);

    void settings(std::function<void(platform::AuthorizationStatus)> completion) override;
    void requestAuthorization(std::uint32_t options,
                              std::function<void(bool, std::optional<std::string>)> completion) override;

    /// `notDetermined` at first; a request for authorisation changes it to what the user then grants.
    void setStatus(platform::AuthorizationStatus status);
    /// What the user will say, yes at first; with an error the question cannot be put at all.
    void setGrant(bool granted, std::optional<std::string> error = {});

    /// The options of each request so far.
    std::vector<std::uint32_t> requests() const;

private:
    const std::shared_ptr<platform::DispatchQueue> queue_;
    mutable Mutex mutex_;
    platform::AuthorizationStatus status_ ZENTAVO_GUARDED_BY(mutex_) = platform::AuthorizationStatus::notDetermined;
    bool granted_ ZENTAVO_GUARDED_BY(mutex_) = true;
    std::optional<std::string> error_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<std::uint32_t> requests_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::testing
