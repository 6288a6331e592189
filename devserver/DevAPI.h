#pragma once

#include <string_view>
#include <vector>

#include <httplib.h>

#include "devserver/Connection.h"
#include "devserver/DeliveryService.h"
#include "devserver/FaultPlan.h"
#include "devserver/InboxService.h"
#include "devserver/IncomingRequest.h"
#include "devserver/LiveStream.h"
#include "devserver/PushEndpoints.h"
#include "devserver/PushLog.h"
#include "devserver/PushRegistrationService.h"
#include "devserver/PushSender.h"
#include "devserver/RequestLog.h"
#include "devserver/Slots.h"

namespace zentavo::devserver {

/// The server's own interface under "/_dev/", for tests and the page. Its requests are not logged and no fault touches
/// them. A page of another site gets nothing: it could not read the answers anyway, and is not to plan faults either.
class DevAPI {
public:
    static constexpr int maximumWaiting = 64;

    /// What it asks and changes; outlives it.
    struct Parts {
        RequestLog& log;
        FaultPlan& faults;
        const PushRegistrationService& push;
        PushSender& sender;
        PushEndpoints& endpoints;
        PushLog& pushes;
        InboxService& inbox;
        const Campaigns& campaigns;
        DeliveryLog& deliveries;
        DeliveryService& delivery;
        const LiveStream& stream;
    };
    explicit DevAPI(const Parts& parts);

    void handle(const IncomingRequest& request, Connection& connection, httplib::Response& response);

private:
    struct Call {
        const IncomingRequest& request;
        Connection& connection;
        httplib::Response& response;
    };
    struct Entry {
        std::string_view method;
        std::string_view path;
        void (DevAPI::*run)(const Call&);
    };
    static const std::vector<Entry>& entries();

    void listRequests(const Call& call);
    void clearRequests(const Call& call);
    void showRequest(const Call& call);
    void showBody(const Call& call);
    void wait(const Call& call);
    void pointToStream(const Call& call);
    void status(const Call& call);
    void listFaults(const Call& call);
    void addFault(const Call& call);
    void clearFaults(const Call& call);
    void listDevices(const Call& call);
    void listPushFiles(const Call& call);
    void sendPush(const Call& call);
    void listPushes(const Call& call);
    void clearPushes(const Call& call);
    void listRegistrations(const Call& call);
    void renewRegistration(const Call& call);
    void dropRegistration(const Call& call);
    void showInbox(const Call& call);
    void addToInbox(const Call& call);
    void listDeliveries(const Call& call);
    void clearDeliveries(const Call& call);
    void takeTrace(const Call& call);
    void listCampaigns(const Call& call);
    void switchCampaigns(const Call& call);
    void preview(const Call& call);

    /// The logged request that the query names, or null after answering that there is none.
    RequestLog::Shared named(const Call& call);
    void changeRegistration(const Call& call, bool (PushEndpoints::*change)(std::string_view));

    RequestLog& log_;
    FaultPlan& faults_;
    const PushRegistrationService& push_;
    PushSender& sender_;
    PushEndpoints& endpoints_;
    PushLog& pushes_;
    InboxService& inbox_;
    const Campaigns& campaigns_;
    DeliveryLog& deliveries_;
    DeliveryService& delivery_;
    const LiveStream& stream_;
    Slots waiting_{maximumWaiting};
};

} // namespace zentavo::devserver
