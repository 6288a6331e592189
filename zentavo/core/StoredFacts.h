#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "zentavo/core/StoreKeys.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Value.h"
#include "zentavo/platform/Device.h"
#include "zentavo/platform/Preferences.h"

namespace zentavo {

/// What the store says that travels in every event.
struct StoredFacts {
    StoredFacts(const platform::Preferences& store, const StoreKeys& keys, const platform::Device& device);

    std::string uid; ///< the device's identifier where the store has none
    std::string customerId;
    std::optional<Value> utm;
    std::optional<Value> atm;
    std::optional<std::string> clickId;
    std::string sessionId;
    std::string visitorType;
};

/// The facts of the store that was asked for last, kept for as long as nobody writes to it: an event then asks the store
/// one question instead of seven. Any thread.
class StoredFactsCache {
public:
    std::shared_ptr<const StoredFacts> facts(const std::shared_ptr<platform::Preferences>& store, const StoreKeys& keys,
                                             const platform::Device& device) const;

private:
    mutable Mutex mutex_;
    mutable std::shared_ptr<const platform::Preferences> store_ ZENTAVO_GUARDED_BY(mutex_);
    mutable std::uint64_t version_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    mutable std::shared_ptr<const StoredFacts> facts_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo
