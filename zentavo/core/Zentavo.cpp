#include "zentavo/core/Zentavo.h"

#include <filesystem>

#include "zentavo/core/ZentavoState.h"

namespace zentavo {

namespace {

/// The shared instance's place. Never destroyed: code that runs while the process exits still finds the instance.
struct SharedInstance {
    Mutex mutex;
    std::shared_ptr<Zentavo> instance ZENTAVO_GUARDED_BY(mutex);
};

SharedInstance& sharedInstance() {
    static SharedInstance& place = *new SharedInstance;
    return place;
}

const StoreKeys& sharedKeys() { return Zentavo::shared()->state()->keys; }

} // namespace

std::shared_ptr<Zentavo> Zentavo::shared() {
    SharedInstance& place = sharedInstance();
    MutexLock lock(place.mutex);
    if (!place.instance) {
        place.instance = std::make_shared<Zentavo>(platform::makeDefault());
    }
    return place.instance;
}

void Zentavo::setShared(std::shared_ptr<Zentavo> instance) {
    SharedInstance& place = sharedInstance();
    MutexLock lock(place.mutex);
    place.instance.swap(instance);
    lock.unlock(); // the earlier one is released outside the lock
}

Zentavo::Zentavo(std::shared_ptr<platform::Platform> system) : state_(std::make_shared<State>(std::move(system))) {
    setFaultLog(
        [log = state_->platform->systemLog](const std::string& line) { log->write(platform::LogLevel::error, line); });
}

Zentavo::~Zentavo() = default;

void Zentavo::activate(Configuration configuration) {
    entryPoint("activate", [&] {
        State& state = *state_;
        const auto& platform = *state.platform;

        auto store = platform.preferences->suite(configuration.appGroupId);
        if (!store) {
            store = platform.preferences->standard();
        }
        state.changeAccount([&](Account& account) {
            account.configuration = configuration;
            account.store = store;
        });

        const bool returning = store->object(state.keys.visitorType).has_value();
        store->set(state.keys.visitorType, returning ? "return" : "new");
        store->set(state.keys.portalId, std::move(configuration.portalId));
        store->set(state.keys.propsId, std::move(configuration.propsId));
        if (auto customer = store->object(state.keys.customerId)) {
            std::string* text = customer->asString();
            MutexLock lock(state.mutex);
            state.customerId = text != nullptr ? std::optional(std::move(*text)) : std::nullopt;
        }
        state.setContext(state.contextInstance.execute());

        if (!store->object(state.keys.appInstall)) {
            sendFirstInstall();
            store->set(state.keys.appInstall, "installed");
        }
        store->synchronise();

        log("Zentavo activate. Configurations received!");

        // A user who has agreed before is registered again, so that a token that changed meanwhile is learnt.
        platform.userInterface()->userNotifications->settings(
            [weak = weak_from_this()](platform::AuthorizationStatus status) {
                entryPoint("completion", [&] {
                    const auto self = weak.lock();
                    if (self && status == platform::AuthorizationStatus::authorized) {
                        self->askForPermission();
                    }
                });
            });
    });
}

Endpoints Zentavo::endpoints() const { return state_->account()->endpoints; }

void Zentavo::setEndpoints(Endpoints endpoints) {
    entryPoint("setEndpoints",
               [&] { state_->changeAccount([&](Account& account) { account.endpoints = std::move(endpoints); }); });
}

std::string Zentavo::getBundleId() {
    return entryPoint(
        "getBundleId",
        [] {
            auto& bundles = *Zentavo::shared()->state()->platform->bundles;
            const auto main = bundles.main();
            const std::filesystem::path path = main->path();
            if (path.extension() == ".appex") {
                // Shop.app/PlugIns/Push.appex: the app is two levels up.
                const auto app = bundles.open(path.parent_path().parent_path().string());
                if (auto identifier = app ? app->infoText("CFBundleIdentifier") : std::nullopt) {
                    return *std::move(identifier);
                }
            }
            return main->identifier().value_or("");
        },
        std::string());
}

bool Zentavo::debug() const { return state_->log->enabled(); }
void Zentavo::setDebug(bool enabled) { state_->log->setEnabled(enabled); }
void Zentavo::log(std::string_view message) const {
    entryPoint("log", [&] { state_->log->write(message); });
}

Zentavo::LogCallback Zentavo::logger() const {
    MutexLock lock(state_->mutex);
    return state_->logger;
}

void Zentavo::setLogger(LogCallback logger) {
    MutexLock lock(state_->mutex);
    state_->logger.swap(logger);
    lock.unlock(); // the earlier callback is released outside the lock
}

void Zentavo::setDeliveryTraceCallback(DeliveryTraceCallback callback) {
    MutexLock lock(state_->mutex);
    state_->deliveryTraceCallback.swap(callback);
    lock.unlock();
}

bool Zentavo::isAssociatedUTM() const { return state_->isAssociatedUTM; }
void Zentavo::setIsAssociatedUTM(bool associated) { state_->isAssociatedUTM = associated; }
bool Zentavo::isDelivery() const { return state_->isDelivery.get(); }
void Zentavo::setIsDelivery(bool newValue) { state_->isDelivery.set(newValue); }
bool Zentavo::isShowingTemplate() const { return state_->isShowingTemplate.get(); }
void Zentavo::setIsShowingTemplate(bool showing) { state_->isShowingTemplate.set(showing); }

Zentavo::RouteCallback Zentavo::callbackHandleRedirectTemplate() const {
    MutexLock lock(state_->mutex);
    return state_->redirectCallback;
}

void Zentavo::setHandleChangeRouteTemplate(RouteCallback callback) {
    MutexLock lock(state_->mutex);
    state_->redirectCallback.swap(callback);
    lock.unlock();
}

Map Zentavo::context() const { return state_->account()->context; }
void Zentavo::setContext(Map context) {
    entryPoint("setContext", [&] { state_->setContext(std::move(context)); });
}
std::optional<Configuration> Zentavo::configuration() const { return state_->account()->configuration; }

std::string Zentavo::sessionIdKey() { return sharedKeys().sessionId; }
std::string Zentavo::visitorType() { return sharedKeys().visitorType; }
std::string Zentavo::CustomerIdKey() { return sharedKeys().customerId; }
std::string Zentavo::VisitorIdKey() { return sharedKeys().visitorId; }
std::string Zentavo::CustomerProperties() { return sharedKeys().customerProperties; }
std::string Zentavo::utmKey() { return sharedKeys().utm; }
std::string Zentavo::atmKey() { return sharedKeys().atm; }
std::string Zentavo::clkBc() { return sharedKeys().clkBc; }
std::string Zentavo::zentavoKeyBadge() { return sharedKeys().badge; }

} // namespace zentavo
