#include "zentavo/core/Zentavo.h"
#include "zentavo/core/ZentavoState.h"

namespace zentavo {

namespace {

std::optional<std::string> stored(const platform::Preferences* store, const std::string& key) {
    return store != nullptr ? store->string(key) : std::nullopt;
}

} // namespace

std::string Zentavo::getDeviceId() const {
    return entryPoint(
        "getDeviceId", [&] { return state_->platform->device->identifierForVendor().value_or(""); }, std::string());
}

std::string Zentavo::getUid() const {
    return entryPoint(
        "getUid",
        [&] {
            auto uid = stored(state_->store().get(), state_->keys.visitorId);
            return uid ? *std::move(uid) : getDeviceId();
        },
        std::string());
}

void Zentavo::setUid(std::string uid) {
    entryPoint("setUid", [&] {
        if (const auto store = state_->store()) {
            store->set(state_->keys.visitorId, std::move(uid));
            store->synchronise();
        }
    });
}

void Zentavo::resetUid() {
    entryPoint("resetUid", [&] {
        if (const auto store = state_->store()) {
            store->remove(state_->keys.visitorId);
            store->synchronise();
        }
    });
}

void Zentavo::setCustomerProperties(std::string customerId, Map customerProperties) {
    entryPoint("setCustomerProperties", [&] {
        const auto store = state_->store();
        const bool hasProperties = !customerProperties.empty();
        {
            MutexLock lock(state_->mutex);
            state_->customerId = customerId;
            if (hasProperties) {
                state_->customerProps = std::move(customerProperties);
            }
        }
        if (store) {
            store->set(state_->keys.customerId, customerId);
            if (hasProperties) {
                // Installed apps hold the id, not the properties, under this key; it stays so.
                store->set(state_->keys.customerProperties, std::move(customerId));
            }
        }
    });
}

std::optional<Map> Zentavo::getCustomerProperties() const {
    MutexLock lock(state_->mutex);
    return state_->customerProps ? *state_->customerProps : Map();
}

void Zentavo::resetCustomer() {
    entryPoint("resetCustomer", [&] {
        if (const auto store = state_->store()) {
            store->remove(state_->keys.customerId);
            store->remove(state_->keys.customerProperties);
            store->synchronise();
        }
    });
}

std::string Zentavo::getCustomerId() const {
    return entryPoint(
        "getCustomerId", [&] { return stored(state_->store().get(), state_->keys.customerId).value_or(""); },
        std::string());
}

std::optional<std::string> Zentavo::getPortalId() const {
    const auto account = state_->account();
    return account->configuration ? account->configuration->portalId : "";
}

std::string Zentavo::getPropsId() const {
    const auto account = state_->account();
    return account->configuration ? account->configuration->propsId : "";
}

std::optional<std::string> Zentavo::getAppGroupId() const {
    const auto account = state_->account();
    return account->configuration ? account->configuration->appGroupId : "";
}

std::optional<std::string> Zentavo::getPushUid() const {
    return entryPoint(
        "getPushUid", [&] { return stored(state_->store().get(), state_->keys.pushUid); }, std::nullopt);
}

} // namespace zentavo
