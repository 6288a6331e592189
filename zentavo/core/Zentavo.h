#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "zentavo/core/Configuration.h"
#include "zentavo/core/Endpoints.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Fault.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/URL.h"
#include "zentavo/foundation/Value.h"
#include "zentavo/foundation/Version.h"
#include "zentavo/platform/Platform.h"

namespace zentavo {

struct CDPEvent;
class AppInbox;
class BaseOperation;
class CDPEventOperation;
class CDPDeliveryJsonOperation;
struct DeliveryTrace;

/// The SDK as a host sees it. A host takes `shared()`, hands it a `Configuration` once, and calls it from then on.
///
/// Threads: every member may be called on any thread; none waits for disk or network. Callbacks that a host sets run on
/// the SDK's worker unless their comment says otherwise, and never under a lock.
/// Lifetime: held by `std::shared_ptr`, also by each event until that is answered. The shared instance lives as long as
/// the process, also for calls made while the process exits.
/// Errors: no exception leaves a member that does something or asks the system; what only copies a value (a plain
/// getter, making an event) can find no memory for the copy. Network failures are not reported; `setDebug(true)` shows
/// them. Faults of the program itself (tracking before any activation) stop the process unless `setFaultPolicy` says
/// otherwise.
class ZENTAVO_EXPORT Zentavo : public std::enable_shared_from_this<Zentavo> {
public:
    using RouteCallback = std::function<void(std::string route)>;
    using LogCallback = std::function<void(std::string message)>;
    using DeliveryTraceCallback = std::function<void(const DeliveryTrace&)>;

    static constexpr std::string_view SDK_VERSION = ZENTAVO_VERSION;

    /// The process's instance, made on the linked port at the first call. A host may put another in its place.
    static std::shared_ptr<Zentavo> shared();
    static void setShared(std::shared_ptr<Zentavo> instance);

    /// An instance of its own on `platform`; the shared one is only the first. Make it with `std::make_shared`.
    explicit Zentavo(std::shared_ptr<platform::Platform> system);
    ~Zentavo();
    Zentavo(const Zentavo&) = delete;
    Zentavo& operator=(const Zentavo&) = delete;

    // --- Start -----------------------------------------------------------------------------------------------------

    /// Opens the store that `configuration.appGroupId` names (or the standard one where that is refused), fills in
    /// visitor type and account, and sends "app_install" once per store. Calling it again repeats this with the new
    /// values; the install event is not repeated. Reads the store on the calling thread.
    void activate(Configuration configuration);

    /// Where the services are; set it before `activate` to reach a deployment of your own.
    Endpoints endpoints() const;
    void setEndpoints(Endpoints endpoints);

    /// The host application's identifier, also inside one of its extensions; "" for a program without a bundle.
    static std::string getBundleId();

    // --- Diagnostics -----------------------------------------------------------------------------------------------

    bool debug() const;
    /// Switches the log on standard output on or off.
    void setDebug(bool enabled);
    /// Writes a line like the SDK's own; nothing while `debug` is off.
    void log(std::string_view message) const;

    /// Kept for hosts that set it; the SDK never calls it.
    LogCallback logger() const;
    void setLogger(LogCallback logger);

    /// Told what became of each answer of the delivery service, and again when a message that was shown is closed: why
    /// was nothing shown? On the main queue for messages that were chosen, else on the worker. Null, the default, switches
    /// it off; while `debug` is on, each trace is also a line of the log.
    void setDeliveryTraceCallback(DeliveryTraceCallback callback);

    // --- Flags and callbacks ---------------------------------------------------------------------------------------

    /// Whether stored attribution travels with events.
    bool isAssociatedUTM() const;
    void setIsAssociatedUTM(bool associated);
    /// Whether sent events ask for in-app messages.
    bool isDelivery() const;
    void setIsDelivery(bool newValue);
    /// Whether an in-app message is on screen.
    bool isShowingTemplate() const;
    void setIsShowingTemplate(bool showing);

    /// Called on the main queue with the route when an in-app message asks to navigate; without it the SDK opens the
    /// route itself.
    RouteCallback callbackHandleRedirectTemplate() const;
    void setHandleChangeRouteTemplate(RouteCallback callback);

    /// The description of device, system and app that travels in every event; empty before activation.
    Map context() const;
    void setContext(Map context);

    std::optional<Configuration> configuration() const;

    // --- Identity --------------------------------------------------------------------------------------------------
    // Before activation there is no store: setters do nothing and getters answer from the device, or "" and none.

    /// The device's identifier for this vendor; "" when the system has none.
    std::string getDeviceId() const;
    /// The visitor: what `setUid` stored, else the device id.
    std::string getUid() const;
    void setUid(std::string uid);
    void resetUid();

    /// Names the customer. The id is stored; non-empty properties are kept in memory.
    void setCustomerProperties(std::string customerId, Map customerProperties);
    /// The properties last set in this process; an empty map before that.
    std::optional<Map> getCustomerProperties() const;
    /// Forgets the stored customer; what is kept in memory stays until the next `setCustomerProperties`.
    void resetCustomer();
    /// The stored customer id, or "".
    std::string getCustomerId() const;

    // The account of the last activation in this process, else "".
    std::optional<std::string> getPortalId() const;
    std::string getPropsId() const;
    std::optional<std::string> getAppGroupId() const;
    /// What the push service calls this device; none before the first registration.
    std::optional<std::string> getPushUid() const;

    // --- Tracking --------------------------------------------------------------------------------------------------

    /// Sends the event. The calling thread pays for building the request and handing it over.
    void track(const CDPEvent& event);
    /// Sends the event "view_screenview" for a screen.
    void trackScreen(std::string name, std::string title, std::string type);

    // --- In-app messages and links ---------------------------------------------------------------------------------

    /// Fires a click's tracking URL. An answer with attribution is stored, and then `completion` is called, on the
    /// worker; without such an answer it is not called.
    void handleTrackingURL(const URL& url, std::function<void()> completion);
    /// Fires a tracking URL whose answer does not matter.
    void handleViewTrackingUrl(const URL& url);
    /// Stores the attribution ("utm", "atm") in the query of a link that opened the app; what it does not name is
    /// forgotten. On the calling thread.
    void handleDeeplinkURL(const URL& url);

    using MediaCallback = std::function<void(Map content)>;
    /// Asks for the content that is due for `event`, which the host shows itself. `completion` is called on the worker
    /// when the answer is an object, and otherwise never.
    void getMediaJson(const CDPEvent& event, MediaCallback completion);
    /// The content of one story.
    void getMediaJson(const CDPEvent& event, std::string storyId, MediaCallback completion);
    /// As `getMediaJson`, with a body of the host's own.
    void processGetMediaJson(const Map& eventBody, MediaCallback completion);

    // --- Push ------------------------------------------------------------------------------------------------------

    /// Asks the user for badge, sound and alert, and then registers for remote notifications.
    void requestNotificationPermission();
    /// Takes the token that the system gave the app, and tells the push service about it when it is news.
    void registerForNotification(std::span<const std::uint8_t> token);
    /// Reports a launch to the push service. Only after activation.
    void trackAppLaunch();

    // --- Inbox -----------------------------------------------------------------------------------------------------

    /// Makes the inbox of a destination for the customer ("customer") or the visitor, and puts it in place of the earlier
    /// one.
    void appInboxInit(std::string destinationId, std::string audienceType);
    /// The process's inbox; null before `appInboxInit`.
    static std::shared_ptr<AppInbox> appInbox();
    static void setAppInbox(std::shared_ptr<AppInbox> inbox);

    // --- Names in the store ----------------------------------------------------------------------------------------

    static std::string sessionIdKey();
    static std::string visitorType();
    static std::string CustomerIdKey();
    static std::string VisitorIdKey();
    static std::string CustomerProperties();
    static std::string utmKey();
    static std::string atmKey();
    static std::string clkBc();
    static std::string zentavoKeyBadge();

    /// What the SDK's own rooms know of an instance.
    struct State;
    const std::shared_ptr<State>& state() const noexcept { return state_; }

private:
    std::shared_ptr<CDPEventOperation> cdpOperation();
    std::shared_ptr<BaseOperation> baseOperation();
    std::shared_ptr<CDPDeliveryJsonOperation> cdpDeliveryJsonOperation();
    void send(const CDPEvent& event);
    void handleEventAnswer(const std::shared_ptr<const std::string>& body, const std::optional<std::string>& data);
    /// Asks which message is due for the event that sent `body`. On the worker.
    void deliver(const std::string& body, const std::string& sessionId);
    void sendFirstInstall();
    void askForPermission();
    /// `store`, `portalId` and `deviceId` are those that the request was made with; another activation may have come
    /// since.
    void handleIdentifyAnswer(const std::string& data, const std::shared_ptr<platform::Preferences>& store,
                              const std::string& portalId, const std::string& deviceId);

    const std::shared_ptr<State> state_;
};

} // namespace zentavo
