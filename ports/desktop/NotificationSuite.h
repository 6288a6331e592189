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
/// icon, and the categories that the app has registered. Any thread; the first use of any member opens the suite, which
/// waits for the disk. Where there is no such suite, nothing is known and nothing is kept.
class NotificationSuite {
public:
    /// Whose word it is: what the app registers takes the place of what is known, what the service registers does not.
    enum class Side { app, notificationService };

    /// Of more categories, those that were registered first are forgotten.
    static constexpr std::size_t maximumCategories = 64;

    /// `app` is the app's name on the bus.
    NotificationSuite(std::shared_ptr<platform::PreferencesProvider> preferences, const std::string& app, Side side)
        : preferences_(std::move(preferences)), name_(app + ".Notifications"), side_(side) {}

    std::int64_t badge() const;
    void setBadge(std::int64_t count) const;

    /// Takes the place of one with the same identifier.
    void addCategory(const platform::NotificationCategory& category) const;
    std::vector<platform::NotificationCategory> categories() const;

private:
    /// The provider keeps it open from the first time on. Null where there is none.
    std::shared_ptr<platform::Preferences> suite() const { return preferences_->suite(name_); }

    const std::shared_ptr<platform::PreferencesProvider> preferences_;
    const std::string name_;
    const Side side_;
};

} // namespace zentavo::desktop
