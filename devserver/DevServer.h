#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "devserver/DeliveryService.h"
#include "devserver/DevAPI.h"
#include "devserver/HTTPFront.h"
#include "devserver/InboxService.h"
#include "devserver/Listener.h"
#include "devserver/LiveStream.h"
#include "devserver/PushEndpoints.h"
#include "devserver/PushSender.h"
#include "devserver/ServiceDesk.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::devserver {

/// The whole server: opened, it serves until it is destroyed.
class DevServer {
public:
    struct Settings {
        std::string host = "127.0.0.1";
        /// 0 means any free one.
        std::uint16_t port = 0;
        /// Stands in the answers to events when not empty.
        std::string sessionId;
        /// The inbox's database; empty means memory.
        std::string inboxStore;
        /// A folder of JSON files with the inbox's first messages; empty means the built-in ones.
        std::string inboxFolder;
        /// A folder with in-app campaigns; empty means the built-in ones.
        std::string campaignFolder;
        /// Offers the campaigns for "*" from the start.
        bool catchAll = false;
        /// A folder of JSON files with pushes that lie ready; empty means the built-in ones.
        std::string pushFolder;
        /// The database of devices and of apps that registered for pushes; empty means memory.
        std::string pushStore;
        /// Plays a push distributor on a D-Bus bus; of its settings the server fills in where its endpoints are.
        bool playsDistributor = false;
        Distributor::Settings distributor;
        RequestLog::Bounds logBounds;
        /// Called for each request of the services, on its connection's thread; may be null.
        ServiceDesk::Observer observer;
    };

    static Result<std::unique_ptr<DevServer>> open(const Settings& settings);
    ~DevServer();
    DevServer(const DevServer&) = delete;
    DevServer& operator=(const DevServer&) = delete;

    std::uint16_t port() const noexcept { return listener_->port(); }
    /// "http://127.0.0.1:8787".
    std::string url() const;

    /// Why no distributor runs although one was asked for; empty otherwise.
    const std::string& distributorProblem() const noexcept { return distributorProblem_; }

    RequestLog& log() noexcept { return log_; }
    FaultPlan& faults() noexcept { return faults_; }

private:
    struct Parts;
    DevServer(const Settings& settings, Parts parts);
    void handle(IncomingRequest&& request, Connection& connection, httplib::Response& response);

    const std::string host_;
    RequestLog log_;
    FaultPlan faults_;
    const std::string distributorProblem_;
    const std::shared_ptr<PushLog> pushes_;
    const std::shared_ptr<PushRegistrationService> push_;
    PushEndpoints endpoints_;
    PushSender sender_;
    const std::shared_ptr<InboxService> inbox_;
    const std::shared_ptr<const Campaigns> campaigns_;
    const std::shared_ptr<DeliveryLog> deliveries_;
    const std::shared_ptr<DeliveryService> delivery_;
    LiveStream stream_;
    ServiceDesk desk_;
    DevAPI devAPI_;
    HTTPFront front_;
    /// Last, so that its threads end before what they use.
    const std::unique_ptr<Listener> listener_;
};

} // namespace zentavo::devserver
