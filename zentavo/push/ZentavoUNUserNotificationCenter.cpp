#include "zentavo/push/ZentavoUNUserNotificationCenter.h"

#include <utility>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/push/PushChoices.h"
#include "zentavo/push/PushClick.h"
#include "zentavo/push/PushTemplate.h"
#include "zentavo/tracking/BaseOperation.h"
#include "zentavo/tracking/CDPEvent.h"

namespace zentavo {

namespace {

const std::string* textIn(const Map& map, std::string_view key) {
    const Value* value = map.find(key);
    return value != nullptr ? value->asString() : nullptr;
}
const Map* mapIn(const Map& map, std::string_view key) {
    const Value* value = map.find(key);
    return value != nullptr ? value->asMap() : nullptr;
}

/// What stands for the lead source of a payload that has none.
const char* const noLeadSource = "123";

} // namespace

ZentavoUNUserNotificationCenter::ZentavoUNUserNotificationCenter(std::shared_ptr<Zentavo> instance)
    : sdk_(instance ? std::move(instance) : Zentavo::shared()),
      actionForUrl(
          [system = sdk_->state()->platform](const URL& url) { system->userInterface()->application->open(url); }),
      baseOperation(BaseOperation::of(*sdk_->state())) {}

template <class Called>
Called ZentavoUNUserNotificationCenter::callback(Called ZentavoUNUserNotificationCenter::*which) const {
    MutexLock lock(mutex_);
    return this->*which;
}

template <class Called>
void ZentavoUNUserNotificationCenter::setCallback(Called ZentavoUNUserNotificationCenter::*which, Called next) {
    MutexLock lock(mutex_);
    (this->*which).swap(next);
    lock.unlock(); // the earlier callback is released outside the lock
}

void ZentavoUNUserNotificationCenter::onNotificationPressed(PressedCallback callback) {
    setCallback(&ZentavoUNUserNotificationCenter::_onNotificationReceived, std::move(callback));
}
void ZentavoUNUserNotificationCenter::setActionForDismiss(Callback callback) {
    setCallback(&ZentavoUNUserNotificationCenter::actionForDismiss, std::move(callback));
}
void ZentavoUNUserNotificationCenter::setActionForDefault(Callback callback) {
    setCallback(&ZentavoUNUserNotificationCenter::actionForDefault, std::move(callback));
}
void ZentavoUNUserNotificationCenter::setActionForCustomDefault(CustomCallback callback) {
    setCallback(&ZentavoUNUserNotificationCenter::actionForCustomDefault, std::move(callback));
}

void ZentavoUNUserNotificationCenter::userNotificationCenter(platform::UserNotifications&,
                                                             const platform::Notification&,
                                                             std::function<void(std::uint32_t)> withCompletionHandler) {
    entryPoint("willPresent", [&] {
        if (withCompletionHandler) {
            withCompletionHandler(platform::presentBadge | platform::presentSound | platform::presentAlert);
        }
    });
}

void ZentavoUNUserNotificationCenter::userNotificationCenter(platform::UserNotifications&,
                                                             const platform::NotificationResponse& didReceive,
                                                             std::function<void()> withCompletionHandler) {
    entryPoint("didReceive", [&] { handleResponse(didReceive); });
    // Also after a fault that was contained: the system waits for it.
    entryPoint("didReceive", [&] {
        if (withCompletionHandler) {
            withCompletionHandler();
        }
    });
}

void ZentavoUNUserNotificationCenter::handleResponse(const platform::NotificationResponse& response) {
    const platform::NotificationContent& content = response.notification.request.content;
    const std::string& action = response.actionIdentifier;
    const Map* aps = mapIn(content.userInfo, "aps");
    if (aps != nullptr) {
        tellPressed(content, *aps);
    }
    if (action == platform::dismissActionIdentifier) {
        if (const auto told = callback(&ZentavoUNUserNotificationCenter::actionForDismiss)) {
            told();
        }
        sdk_->log("Action dismiss");
        return;
    }
    if (aps != nullptr) {
        if (const auto payload = NotificationProperties::read(*aps)) {
            handleClick(*payload, action);
        } else if (sdk_->debug()) {
            sdk_->log("Error: the click does nothing, its payload cannot be read: " + payload.error().message);
        }
    }
    if (action == platform::defaultActionIdentifier) {
        if (const auto told = callback(&ZentavoUNUserNotificationCenter::actionForDefault)) {
            told();
        }
    } else if (const auto told = callback(&ZentavoUNUserNotificationCenter::actionForCustomDefault)) {
        told(action);
    }
}

void ZentavoUNUserNotificationCenter::tellPressed(const platform::NotificationContent& content, const Map& aps) const {
    // What the image is does not matter, but without one hosts are not told.
    const std::string* image = textIn(aps, "urlImageString");
    const std::string* url = textIn(aps, "url");
    const Map* additionalData = mapIn(aps, "additionalData");
    if (image == nullptr || url == nullptr || additionalData == nullptr || !URL::parse(*url)) {
        return;
    }
    if (const auto told = callback(&ZentavoUNUserNotificationCenter::_onNotificationReceived)) {
        told({{"title", content.title}, {"clickURL", *url}, {"additionalData", *additionalData}});
    }
}

void ZentavoUNUserNotificationCenter::handleClick(const NotificationProperties& payload,
                                                  const std::string& actionIdentifier) const {
    if (const auto tracking = URL::parse(payload.trackingClickUrl.value_or(""))) {
        sdk_->handleTrackingURL(*tracking, [log = sdk_->state()->log] { log->write("<ZENAVO> tracking click ok"); });
    }
    const PushChoices choices(*sdk_->state()->platform->preferences, payload.pushId);
    if (payload.template_ == PushTemplate::rating) {
        sendRating(payload, choices.rating());
    }
    if (const auto url = clickedURL(payload, choices, actionIdentifier)) {
        open(*url);
    }
}

void ZentavoUNUserNotificationCenter::sendRating(const NotificationProperties& payload, std::int64_t rating) const {
    CDPEvent event(*sdk_, "submit_rating");
    event.setEventProperties({{"rating_scale", payload.ratingSettings ? payload.ratingSettings->scale : 0},
                              {"selected_rating", rating},
                              {"lead_source_id", payload.leadSourceId.value_or(noLeadSource)}});
    Map ids;
    for (const auto& [name, id] : {std::pair("story", &payload.storyId), std::pair("campaign", &payload.campaignId),
                                   std::pair("variant", &payload.variantId)}) {
        if (*id) {
            ids.set(name, Map{{"id", **id}});
        }
    }
    event.setObjectProperties(std::move(ids));
    sdk_->track(event);
}

void ZentavoUNUserNotificationCenter::open(const std::string& url) const {
    if (const auto target = URL::parse(url)) {
        actionForUrl(*target);
    }
}

} // namespace zentavo
