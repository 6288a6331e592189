#include "ports/desktop/PushRegistration.h"

#include <utility>

#include <gio/gio.h>

#include "ports/desktop/PushEndpoint.h"
#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo::desktop {

namespace {

constexpr const char* registrationKey = "ZentavoPushRegistration";
constexpr const char* lastDistributorKey = "ZentavoPushLastDistributor";
constexpr const char* chosenDistributorKey = "ZentavoPushDistributor";

} // namespace

PushRegistration PushRegistration::make(std::string distributor, platform::Random& random) {
    return {random.uuidText(), std::move(distributor), encryptedVersion, WebPushKeys::make(random), ""};
}

std::string PushRegistration::senderText() const {
    if (endpoint.empty() || version == plainVersion) {
        return endpoint;
    }
    return endpoint + "#p256dh=" + keys.publicKeyText() + "&auth=" + keys.authText();
}

Result<std::optional<PushRegistration>> PushRegistrationStore::load() const {
    const auto stored = suite_->map(registrationKey);
    if (!stored) {
        return std::optional<PushRegistration>();
    }
    KeyedDecoder decoder(*stored);
    const std::string token = decoder.string("token");
    const std::string distributor = decoder.string("distributor");
    const std::int64_t version = decoder.integer("version");
    const std::string keyText = decoder.string("keys");
    const std::string endpoint = decoder.string("endpoint");
    if (const auto& failure = decoder.failure()) {
        return Error{"the stored registration for pushes is damaged: " + failure->message};
    }
    const auto keys = WebPushKeys::read(keyText);
    if (!keys) {
        return keys.error();
    }
    const bool known = version == PushRegistration::plainVersion || version == PushRegistration::encryptedVersion;
    if (token.empty() || g_dbus_is_name(distributor.c_str()) == FALSE || !known ||
        (!endpoint.empty() && !readPushEndpoint(endpoint))) {
        return Error{"the stored registration for pushes is damaged"};
    }
    return std::optional(PushRegistration{token, distributor, static_cast<int>(version), *keys, endpoint});
}

void PushRegistrationStore::save(const PushRegistration& registration) const {
    // As one value, so that no process ever sees half of it.
    suite_->set(registrationKey, Map{{"token", registration.token},
                                     {"distributor", registration.distributor},
                                     {"version", registration.version},
                                     {"keys", registration.keys.text()},
                                     {"endpoint", registration.endpoint}});
    suite_->set(lastDistributorKey, registration.distributor);
}

void PushRegistrationStore::drop() const { suite_->remove(registrationKey); }

std::string PushRegistrationStore::chosenDistributor() const {
    return suite_->string(chosenDistributorKey).value_or("");
}

std::string PushRegistrationStore::lastDistributor() const { return suite_->string(lastDistributorKey).value_or(""); }

} // namespace zentavo::desktop
