#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/UserNotifications.h"

namespace zentavo::testing {

/// A notification centre whose user is the test. Any thread. Held by `std::shared_ptr`.
class ZENTAVO_EXPORT MemoryUserNotifications : public platform::UserNotifications,
                                               public std::enable_shared_from_this<MemoryUserNotifications> {
public:
    /// Completions run on `queue`.
    explicit MemoryUserNotifications(std::shared_ptr<platform::DispatchQueue> queue);

    void settings(std::function<void(platform::AuthorizationStatus)> completion) override;
    void requestAuthorization(std::uint32_t options,
                              std::function<void(bool, std::optional<std::string>)> completion) override;

    void setDelegate(std::weak_ptr<platform::UserNotificationDelegate> delegate) override;
    void add(platform::NotificationRequest request,
             std::function<void(std::optional<std::string>)> completion) override;
    void delivered(std::function<void(std::vector<platform::Notification>)> completion) override;
    void removeDelivered(std::vector<std::string> identifiers) override;
    void addCategory(platform::NotificationCategory category) override;
    void categories(std::function<void(std::vector<platform::NotificationCategory>)> completion) override;
    void setBadgeCount(std::int64_t count) override;

    /// A notification arrives while the app is in front: on the queue the delegate is asked how to show it, and what it
    /// says is kept for `presentations`. Without a delegate it is not shown.
    void arrive(platform::Notification notification);
    /// The user answers a notification: on the queue the delegate is told, or the next one when there is none.
    void respond(platform::NotificationResponse response);

    /// What delegates have said so far about how to show a notification.
    std::vector<std::uint32_t> presentations() const;
    /// How many answers a delegate has been told and has said that it is done with.
    std::size_t finishedResponses() const;
    /// What is shown, which kinds are known, and the number on the icon.
    std::vector<platform::Notification> shown() const;
    std::vector<platform::NotificationCategory> knownCategories() const;
    std::int64_t badgeCount() const;

    /// `notDetermined` at first; a request for authorisation changes it to what the user then grants.
    void setStatus(platform::AuthorizationStatus status);
    /// What the user will say, yes at first; with an error the question cannot be put at all.
    void setGrant(bool granted, std::optional<std::string> error = {});

    /// The options of each request so far.
    std::vector<std::uint32_t> requests() const;

private:
    /// On the queue.
    void tellDelegate();

    const std::shared_ptr<platform::DispatchQueue> queue_;
    mutable Mutex mutex_;
    std::weak_ptr<platform::UserNotificationDelegate> delegate_ ZENTAVO_GUARDED_BY(mutex_);
    std::deque<platform::NotificationResponse> waiting_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<std::uint32_t> presentations_ ZENTAVO_GUARDED_BY(mutex_);
    std::size_t finishedResponses_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::vector<platform::Notification> shown_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<platform::NotificationCategory> categories_ ZENTAVO_GUARDED_BY(mutex_);
    std::int64_t badgeCount_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    platform::AuthorizationStatus status_ ZENTAVO_GUARDED_BY(mutex_) = platform::AuthorizationStatus::notDetermined;
    bool granted_ ZENTAVO_GUARDED_BY(mutex_) = true;
    std::optional<std::string> error_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<std::uint32_t> requests_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::testing
