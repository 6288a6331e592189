#pragma once

#include <functional>
#include <memory>
#include <string>

#include "zentavo/core/Zentavo.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/UserNotificationDelegate.h"
#include "zentavo/push/NotificationProperties.h"

namespace zentavo {

/// What a host makes the delegate of the notification centre (`UserNotifications::setDelegate`), after activation:
/// shows notifications while the app is in front, and does what a click asks for.
///
/// Of a click it fires the payload's tracking URL, sends the rating where the template asked for one, and opens the URL
/// that the user chose inside the rich template, or else the payload's "url". A button of the payload opens its own
/// URL.
///
/// Held by `std::shared_ptr`; the centre does not keep it alive. Setters on any thread. Callbacks run where the centre
/// tells of answers, on the main queue.
class ZENTAVO_EXPORT ZentavoUNUserNotificationCenter : public platform::UserNotificationDelegate {
public:
    using Callback = std::function<void()>;
    using CustomCallback = std::function<void(std::string actionIdentifier)>;
    using PressedCallback = std::function<void(Map notification)>;

    /// For an instance of its own; the shared one without it.
    explicit ZentavoUNUserNotificationCenter(std::shared_ptr<Zentavo> instance = nullptr);

    /// Told of each answered notification that has an image, an URL and additional data: "title", "clickURL" and
    /// "additionalData". Before the click is handled.
    void onNotificationPressed(PressedCallback callback);
    /// The user put a notification away.
    void setActionForDismiss(Callback callback);
    /// The user opened a notification by its body. After the click was handled.
    void setActionForDefault(Callback callback);
    /// The user pressed a button; told its identifier. After the click was handled.
    void setActionForCustomDefault(CustomCallback callback);

    void userNotificationCenter(platform::UserNotifications& center, const platform::Notification& willPresent,
                                std::function<void(std::uint32_t)> withCompletionHandler) override;
    void userNotificationCenter(platform::UserNotifications& center, const platform::NotificationResponse& didReceive,
                                std::function<void()> withCompletionHandler) override;

private:
    void handleResponse(const platform::NotificationResponse& response);
    void tellPressed(const platform::NotificationContent& content, const Map& aps) const;
    void handleClick(const NotificationProperties& payload, const std::string& actionIdentifier) const;
    void sendRating(const NotificationProperties& payload, std::int64_t rating) const;
    void open(const std::string& url) const;

    /// A copy, to be called outside the lock; empty where none is set.
    template <class Called>
    Called callback(Called ZentavoUNUserNotificationCenter::*which) const;
    template <class Called>
    void setCallback(Called ZentavoUNUserNotificationCenter::*which, Called next);

    const std::shared_ptr<Zentavo> sdk_;
    mutable Mutex mutex_;
    Callback actionForDismiss ZENTAVO_GUARDED_BY(mutex_);
    /// Opens what a click leads to.
    const std::function<void(const URL&)> actionForUrl;
    Callback actionForDefault ZENTAVO_GUARDED_BY(mutex_);
    CustomCallback actionForCustomDefault ZENTAVO_GUARDED_BY(mutex_);
    PressedCallback _onNotificationReceived ZENTAVO_GUARDED_BY(mutex_);
    /// What the instance fires the tracking URLs of clicks with; held, not used, here.
    const std::shared_ptr<BaseOperation> baseOperation;
};

} // namespace zentavo
