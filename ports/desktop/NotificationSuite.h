#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zentavo/platform/Notification.h"
#include "zentavo/platform/Preferences.h"

namespace zentavo::desktop {

/// What an app and its notification service know together of notifications, whichever of them runs: the number on the
/// icon, and the categories that the app has registered. Any thread.
class NotificationSuite {
public:
    /// Of more categories, those that were registered first are forgotten.
    static constexpr std::size_t maximumCategories = 64;

    /// `app` is the app's name on the bus. Null where there is no such suite.
    static std::shared_ptr<NotificationSuite> open(platform::PreferencesProvider& preferences, const std::string& app);
    explicit NotificationSuite(std::shared_ptr<platform::Preferences> suite) : suite_(std::move(suite)) {}

    std::int64_t badge() const;
    void setBadge(std::int64_t count) const;

    /// Takes the place of one with the same identifier.
    void addCategory(const platform::NotificationCategory& category) const;
    std::vector<platform::NotificationCategory> categories() const;

private:
    const std::shared_ptr<platform::Preferences> suite_;
};

} // namespace zentavo::desktop
