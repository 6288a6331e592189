#include "zentavo/core/StoredFacts.h"

namespace zentavo {

StoredFacts::StoredFacts(const platform::Preferences& store, const StoreKeys& keys, const platform::Device& device)
    : customerId(store.string(keys.customerId).value_or("")), utm(store.object(keys.utm)), atm(store.object(keys.atm)),
      clickId(store.string(keys.clkBc)), sessionId(store.string(keys.sessionId).value_or("")),
      visitorType(store.string(keys.visitorType).value_or("")) {
    auto visitor = store.string(keys.visitorId);
    uid = visitor ? *std::move(visitor) : device.identifierForVendor().value_or("");
}

std::shared_ptr<const StoredFacts> StoredFactsCache::facts(const std::shared_ptr<platform::Preferences>& store,
                                                           const StoreKeys& keys,
                                                           const platform::Device& device) const {
    // Asked for before the values: a write in between makes them newer than their mark, never older.
    const auto version = store->version();
    if (version) {
        MutexLock lock(mutex_);
        if (store_ == store && version_ == *version) {
            return facts_;
        }
    }
    auto fresh = std::make_shared<const StoredFacts>(*store, keys, device);
    if (version) {
        std::shared_ptr<const platform::Preferences> before = store; // the earlier one is released outside the lock
        auto earlier = fresh;
        MutexLock lock(mutex_);
        store_.swap(before);
        facts_.swap(earlier);
        version_ = *version;
    }
    return fresh;
}

} // namespace zentavo
