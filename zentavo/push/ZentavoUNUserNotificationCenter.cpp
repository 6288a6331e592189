#include "zentavo/push/ZentavoUNUserNotificationCenter.h"

#include <utility>

#include "zentavo/core/ZentavoState.h"
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
      reading_(sdk_->state()->platform->queues->make("zentavo.push.answers", platform::QueueKind::serial)),
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
    reading_->async(
        [self = shared_from_this(), response = didReceive, completion = std::move(withCompletionHandler)]() mutable {
            std::shared_ptr<const PushClick> click;
            entryPoint("didReceive", [&] { click = self->readClick(response); });
            const auto mainQueue = self->sdk_->state()->platform->userInterface()->mainQueue;
            mainQueue->async([self = std::move(self), response = std::move(response), click = std::move(click),
                              completion = std::move(completion)] {
                entryPoint("didReceive", [&] { self->handleResponse(response, click.get()); });
                // Also after a fault that was contained: the system waits for it.
                entryPoint("didReceive", [&] {
                    if (completion) {
                        completion();
                    }
                });
            });
        });
}

std::shared_ptr<const PushClick>
ZentavoUNUserNotificationCenter::readClick(const platform::NotificationResponse& response) const {
    const Map* aps = mapIn(response.notification.request.content.userInfo, "aps");
    if (aps == nullptr || response.actionIdentifier == platform::dismissActionIdentifier) {
        return nullptr;
    }
    auto click = PushClick::read(*aps, response.actionIdentifier, *sdk_->state()->platform->preferences);
    if (!click) {
        sdk_->log("Error: the click does nothing, its payload cannot be read: " + click.error().message);
        return nullptr;
    }
    return std::make_shared<const PushClick>(*std::move(click));
}

void ZentavoUNUserNotificationCenter::handleResponse(const platform::NotificationResponse& response,
                                                     const PushClick* click) const {
    const std::string& action = response.actionIdentifier;
    tellPressed(response.notification.request.content);
    if (action == platform::dismissActionIdentifier) {
        if (const auto told = callback(&ZentavoUNUserNotificationCenter::actionForDismiss)) {
            told();
        }
        sdk_->log("Action dismiss");
        return;
    }
    if (click != nullptr) {
        handleClick(*click);
    }
    if (action == platform::defaultActionIdentifier) {
        if (const auto told = callback(&ZentavoUNUserNotificationCenter::actionForDefault)) {
            told();
        }
    } else if (const auto told = callback(&ZentavoUNUserNotificationCenter::actionForCustomDefault)) {
        told(action);
    }
}

void ZentavoUNUserNotificationCenter::tellPressed(const platform::NotificationContent& content) const {
    const Map* aps = mapIn(content.userInfo, "aps");
    // What the image is does not matter, but without one hosts are not told.
    const std::string* image = aps != nullptr ? textIn(*aps, "urlImageString") : nullptr;
    const std::string* url = aps != nullptr ? textIn(*aps, "url") : nullptr;
    const Map* additionalData = aps != nullptr ? mapIn(*aps, "additionalData") : nullptr;
    if (image == nullptr || url == nullptr || additionalData == nullptr || !URL::parse(*url)) {
        return;
    }
    if (const auto told = callback(&ZentavoUNUserNotificationCenter::_onNotificationReceived)) {
        told({{"title", content.title}, {"clickURL", *url}, {"additionalData", *additionalData}});
    }
}

void ZentavoUNUserNotificationCenter::handleClick(const PushClick& click) const {
    if (const auto tracking = URL::parse(click.payload.trackingClickUrl.value_or(""))) {
        sdk_->handleTrackingURL(*tracking, [log = sdk_->state()->log] { log->write("<ZENAVO> tracking click ok"); });
    }
    if (click.payload.template_ == PushTemplate::rating) {
        sendRating(click);
    }
    if (click.url) {
        open(*click.url);
    }
}

void ZentavoUNUserNotificationCenter::sendRating(const PushClick& click) const {
    const NotificationProperties& payload = click.payload;
    CDPEvent event(*sdk_, "submit_rating");
    event.setEventProperties({{"rating_scale", payload.ratingSettings ? payload.ratingSettings->scale : 0},
                              {"selected_rating", click.rating},
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
