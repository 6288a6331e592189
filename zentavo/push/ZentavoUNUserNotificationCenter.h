#pragma once

#include <functional>
#include <memory>
#include <string>

#include "zentavo/core/Zentavo.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/UserNotificationDelegate.h"

namespace zentavo {

struct PushClick;

/// What a host makes the delegate of the notification centre (`UserNotifications::setDelegate`), after activation:
/// shows notifications while the app is in front, and does what a click asks for.
///
/// Of a click it fires the payload's tracking URL, sends the rating where the template asked for one, and opens the URL
/// that the user chose inside the rich template, or else the payload's "url". A button of the payload opens its own
/// URL.
///
/// Held by `std::shared_ptr`; the centre does not keep it alive, but an answer that is under way does. Setters on any
/// thread. Callbacks run on the main queue, in the order of the answers, and after the centre's call has returned: what
/// the user chose in a rich template is read elsewhere first.
class ZENTAVO_EXPORT ZentavoUNUserNotificationCenter
    : public platform::UserNotificationDelegate,
      public std::enable_shared_from_this<ZentavoUNUserNotificationCenter> {
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
    /// Null for an answer that is no click, or whose payload cannot be read. Off the main queue.
    std::shared_ptr<const PushClick> readClick(const platform::NotificationResponse& response) const;
    void handleResponse(const platform::NotificationResponse& response, const PushClick* click) const;
    void tellPressed(const platform::NotificationContent& content) const;
    void handleClick(const PushClick& click) const;
    void sendRating(const PushClick& click) const;
    void open(const std::string& url) const;

    /// A copy, to be called outside the lock; empty where none is set.
    template <class Called>
    Called callback(Called ZentavoUNUserNotificationCenter::*which) const;
    template <class Called>
    void setCallback(Called ZentavoUNUserNotificationCenter::*which, Called next);

    const std::shared_ptr<Zentavo> sdk_;
    /// Reads what answers need from the disk; serial, so that they stay in their order.
    const std::shared_ptr<platform::DispatchQueue> reading_;
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
