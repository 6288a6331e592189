#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "zentavo/core/Context.h"
#include "zentavo/core/DebugLog.h"
#include "zentavo/core/StoreKeys.h"
#include "zentavo/core/StoredFacts.h"
#include "zentavo/core/Zentavo.h"
#include "zentavo/foundation/Atomic.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Result.h"

namespace zentavo {

class BaseOperation;
class CDPDeliveryOperation;
class CDPDeliveryJsonOperation;
class ImageLoader;
class PushTemplateBaseController;
class TemplatePresenter;

/// What an activation settles, as one unchanging record: an event takes the whole of it with one pointer.
struct Account {
    /// None before activation.
    std::optional<Configuration> configuration;
    /// Null before activation: set together with `configuration`.
    std::shared_ptr<platform::Preferences> store;
    Endpoints endpoints;
    Map context;
    /// `context` as JSON text, rendered once for all events; an error where JSON cannot say it.
    Result<std::string> contextText = std::string("{}");
};

/// Everything that an instance holds. The members of the facade, spread over the rooms, work on it.
struct Zentavo::State {
    explicit State(std::shared_ptr<platform::Platform> system);
    ~State();
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    const std::shared_ptr<platform::Platform> platform;
    const StoreKeys keys;
    const std::shared_ptr<DebugLog> log;
    Context contextInstance;
    const StoredFactsCache storedFacts;
    const std::string& applicationIdKey = keys.applicationId;
    /// Seconds; kept for hosts that know it, read by nothing.
    static constexpr double expiredTime = 300.0;

    Atomic<bool> isDelivery{true};
    Atomic<bool> isShowingTemplate{false};
    std::atomic<bool> isAssociatedUTM{true};

    std::shared_ptr<const Account> account() const {
        MutexLock lock(mutex);
        return accountInForce;
    }
    std::shared_ptr<platform::Preferences> store() const { return account()->store; }

    /// Puts a changed copy of the account in force. Changes wait for each other and readers for none of them; `change`
    /// must be plain assignment.
    template <class Change>
    void changeAccount(Change change) {
        std::shared_ptr<const Account> other; // first the next one, then the earlier one, released after the locks
        MutexLock oneAtATime(changing);
        auto copy = std::make_shared<Account>(*account());
        change(*copy);
        other = std::move(copy);
        MutexLock lock(mutex);
        accountInForce.swap(other);
    }
    void setContext(Map context);

    /// Held while a changed account is made; taken before `mutex`.
    Mutex changing;
    mutable Mutex mutex;
    std::shared_ptr<const Account> accountInForce ZENTAVO_GUARDED_BY(mutex) = std::make_shared<const Account>();
    std::optional<std::string> customerId ZENTAVO_GUARDED_BY(mutex);
    std::optional<Map> customerProps ZENTAVO_GUARDED_BY(mutex);
    RouteCallback redirectCallback ZENTAVO_GUARDED_BY(mutex);
    LogCallback logger ZENTAVO_GUARDED_BY(mutex);
    DeliveryTraceCallback deliveryTraceCallback ZENTAVO_GUARDED_BY(mutex);

    // Made when first asked for, and kept.
    std::shared_ptr<BaseOperation> baseOperation ZENTAVO_GUARDED_BY(mutex);
    std::shared_ptr<CDPEventOperation> cdpOperation ZENTAVO_GUARDED_BY(mutex);
    std::shared_ptr<CDPDeliveryOperation> cdpDeliveryOperation ZENTAVO_GUARDED_BY(mutex);
    std::shared_ptr<CDPDeliveryJsonOperation> cdpDeliveryJsonOperation ZENTAVO_GUARDED_BY(mutex);

    /// The message on screen; null when there is none. Main queue only, its release included.
    std::shared_ptr<TemplatePresenter> currentTemplate;
    /// The rich push on screen, as above, and what fetches pictures for it; made when first needed.
    std::shared_ptr<PushTemplateBaseController> currentPush;
    std::shared_ptr<ImageLoader> pushImages;
};

} // namespace zentavo
