#include <tuple>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/DecimalInteger.h"
#include "zentavo/foundation/Hex.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/tracking/CDPEvent.h"
#include "zentavo/tracking/PushApplicationOperation.h"
#include "zentavo/tracking/RegisterDeviceOperation.h"

namespace zentavo {

namespace {

/// Seconds for which an unchanged token is not sent again.
constexpr double registrationPause = 300.0;

constexpr std::uint32_t authorizationOptions =
    platform::authorizeBadge | platform::authorizeSound | platform::authorizeAlert;

/// The push uid in the answer to a registration, "data.zentavo_apppush_uid". A text in the place of "data" is none: a
/// refusal holds its reason there.
std::optional<std::string> pushUidIn(const Map& answer) {
    const Value* data = answer.find("data");
    const Map* fields = data != nullptr ? data->asMap() : nullptr;
    const Value* found = fields != nullptr ? fields->find("zentavo_apppush_uid") : nullptr;
    const std::string* uid = found != nullptr ? found->asString() : nullptr;
    return uid != nullptr && !uid->empty() ? std::optional(*uid) : std::nullopt;
}

} // namespace

void Zentavo::requestNotificationPermission() {
    entryPoint("requestNotificationPermission", [&] { askForPermission(); });
}

void Zentavo::askForPermission() {
    const auto interface = state_->platform->userInterface();
    interface->userNotifications->requestAuthorization(
        authorizationOptions, [state = state_](bool granted, const std::optional<std::string>&) {
            entryPoint("completion", [&] {
                state->log->write(std::string("Get Permission For PushNotifications with granted = ") +
                                  (granted ? "true" : "false"));
                const auto current = state->platform->userInterface();
                current->mainQueue->async([application = current->application] {
                    entryPoint("main queue", [&] { application->registerForRemoteNotifications(); });
                });
            });
        });
}

void Zentavo::registerForNotification(std::span<const std::uint8_t> token) {
    entryPoint("registerForNotification", [&] {
        const std::string tokenText = hex::encode(token);
        const auto account = state_->account();
        const auto& store = account->store;
        const StoreKeys& keys = state_->keys;
        if (!store) {
            log("Error: UserDefaults in registerForNotification not found!");
            return;
        }
        const auto portalId = store->string(keys.portalId);
        if (!portalId || !store->string(keys.propsId)) {
            return;
        }
        const auto previousToken = store->string(keys.deviceToken);
        store->set(keys.deviceToken, tokenText);
        const auto deviceId = state_->platform->device->identifierForVendor();
        if (!deviceId) {
            fatalError("a device without an identifier cannot be registered for push notifications");
        }
        const double pauseEnd = store->number(keys.operationTime) + registrationPause;
        const bool unchanged = previousToken == tokenText;
        if (unchanged && pauseEnd > state_->platform->clock->secondsSince1970()) {
            store->synchronise();
            return;
        }
        const auto portalNumber = decimalInteger(*portalId);
        if (!portalNumber) {
            log("Error: the portal id is no number; the device is not registered");
            store->synchronise();
            return;
        }
        const auto operation =
            std::make_shared<RegisterDeviceOperation>(std::make_shared<HTTPClient>(state_->platform, state_->log));
        operation->identify(account->endpoints.push, *portalNumber, tokenText, *deviceId,
                            // The operation lives until its answer, so that a failed registration is repeated.
                            [weak = weak_from_this(), store, deviceId = *deviceId,
                             operation](const std::optional<std::string>& data, const std::optional<Error>&) {
                                const auto self = weak.lock();
                                if (self && data) {
                                    self->handleIdentifyAnswer(*data, store, deviceId);
                                }
                            });
        store->synchronise();
    });
}

void Zentavo::handleIdentifyAnswer(const std::string& data, const std::shared_ptr<platform::Preferences>& store,
                                   const std::string& deviceId) {
    const auto answer = json::readMap(data);
    if (!answer) {
        log(answer.error().message);
        return;
    }
    const auto uid = pushUidIn(*answer);
    if (!uid) {
        log("Error: the answer to the registration of device " + deviceId + " holds no push uid");
        return;
    }
    const StoreKeys& keys = state_->keys;
    store->set(keys.pushUid, *uid);
    store->set(keys.operationTime, state_->platform->clock->secondsSince1970());
    if (state_->store() != store) {
        // The event would go to the account that is in force now, and make the earlier one's customer its own.
        log("The device is registered for an earlier activation; the one in force is not told");
        return;
    }

    CDPEvent event(*this, "app_push_subscribe");
    event.setEventProperties({{"zentavo_apppush_uid", *uid}});
    if (const auto customer = store->string(keys.customerId)) {
        // The setter would store the customer as well, who is stored already, or has just been reset on another thread.
        event.customerProps = {{"customer_id", *customer}, {"update_mode", "update"}};
    }
    send(event);
}

void Zentavo::trackAppLaunch() {
    entryPoint("trackAppLaunch", [&] {
        const auto account = state_->account();
        if (!account->configuration) {
            fatalError("trackAppLaunch needs an activation first");
        }
        if (!account->store) {
            return;
        }
        const auto operation =
            std::make_shared<PushApplicationOperation>(std::make_shared<HTTPClient>(state_->platform, state_->log));
        operation->launched(
            account->endpoints.push, *account->configuration, getDeviceId(),
            // The operation lives until its answer, so that a failed report is repeated.
            [operation, log = state_->log](const std::optional<std::string>& data, const std::optional<Error>& error) {
                if (error) {
                    // The client has said so too, with what it does next. This line is what a launch that was not
                    // reported is known by, whatever the client writes.
                    log->write("Error: " + error->message);
                } else if (data) {
                    std::ignore = json::readMap(*data); // an object, which says nothing of use yet
                }
            });
    });
}

} // namespace zentavo
