#include "devserver/DevServer.h"

#include <utility>

#include "devserver/EventService.h"
#include "devserver/LivePage.h"
#include "devserver/MediaTemplateService.h"
#include "devserver/PictureService.h"
#include "devserver/TemplateHostService.h"
#include "devserver/TrackingService.h"

namespace zentavo::devserver {

namespace {

std::string urlOf(const std::string& host, std::uint16_t port) {
    const bool isIPv6 = host.find(':') != std::string::npos;
    return "http://" + (isIPv6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

} // namespace

/// What can fail to open.
struct DevServer::Parts {
    std::unique_ptr<InboxStore> inbox;
    Campaigns campaigns;
    PushFiles pushFiles;
    std::shared_ptr<EndpointStore> endpoints;
    std::shared_ptr<PushRegistrationService> devices;
    std::unique_ptr<Listener> listener;
    /// As this machine's own programs reach the server: "http://127.0.0.1:8787".
    std::string base;
    std::unique_ptr<Distributor> distributor;
    std::string distributorProblem;
};

Result<std::unique_ptr<DevServer>> DevServer::open(const Settings& settings) {
    auto inbox = InboxStore::open(settings.inboxStore);
    if (!inbox) {
        return inbox.error();
    }
    if (auto seeded = InboxMessages(**inbox).seed(settings.inboxFolder); !seeded) {
        return Error{"the inbox cannot be filled: " + seeded.error().message};
    }
    auto campaigns = Campaigns::read(settings.campaignFolder);
    if (!campaigns) {
        return Error{"the campaigns cannot be read: " + campaigns.error().message};
    }
    auto pushFiles = PushFiles::read(settings.pushFolder);
    if (!pushFiles) {
        return Error{"the pushes cannot be read: " + pushFiles.error().message};
    }
    auto endpoints = EndpointStore::open(settings.pushStore);
    if (!endpoints) {
        return endpoints.error();
    }
    auto devices = PushRegistrationService::open(settings.pushStore);
    if (!devices) {
        return devices.error();
    }
    auto listener = Listener::open(settings.host, settings.port);
    if (!listener) {
        return listener.error();
    }
    Parts parts;
    parts.inbox = *std::move(inbox);
    parts.campaigns = *std::move(campaigns);
    parts.pushFiles = *std::move(pushFiles);
    parts.endpoints = *std::move(endpoints);
    parts.devices = *std::move(devices);
    parts.listener = *std::move(listener);
    const bool everywhere = settings.host == "0.0.0.0" || settings.host == "::";
    parts.base = urlOf(everywhere ? "127.0.0.1" : settings.host, parts.listener->port());
    if (settings.playsDistributor) {
        Distributor::Settings distributor = settings.distributor;
        distributor.endpoints = parts.base + std::string(PushEndpoints::path);
        auto started = Distributor::start(distributor, parts.endpoints);
        if (started) {
            parts.distributor = *std::move(started);
        } else {
            parts.distributorProblem = started.error().message;
        }
    }
    return std::unique_ptr<DevServer>(new DevServer(settings, std::move(parts)));
}

DevServer::DevServer(const Settings& settings, Parts parts)
    : host_(settings.host), log_(settings.logBounds), distributorProblem_(parts.distributorProblem),
      pushes_(std::make_shared<PushLog>()), push_(parts.devices),
      endpoints_(parts.base, parts.endpoints, std::move(parts.distributor),
                 settings.playsDistributor ? distributorProblem_ : "the server was not started with --distributor",
                 pushes_),
      sender_(*push_, endpoints_, pushes_, std::move(parts.pushFiles)),
      inbox_(std::make_shared<InboxService>(std::move(parts.inbox))),
      campaigns_(std::make_shared<const Campaigns>(std::move(parts.campaigns))),
      deliveries_(std::make_shared<DeliveryLog>()),
      delivery_(std::make_shared<DeliveryService>(campaigns_, deliveries_)), stream_(log_, faults_, *pushes_),
      desk_(log_, faults_,
            {std::make_shared<EventService>(settings.sessionId, pushes_), push_, delivery_,
             std::make_shared<MediaTemplateService>(campaigns_, deliveries_),
             std::make_shared<TrackingService>(campaigns_, deliveries_, pushes_),
             std::make_shared<TemplateHostService>(), std::make_shared<PictureService>(), inbox_},
            settings.observer),
      devAPI_({log_, faults_, *push_, sender_, endpoints_, *pushes_, *inbox_, *campaigns_, *deliveries_, *delivery_,
               stream_}),
      front_([this](IncomingRequest&& request, Connection& connection, httplib::Response& response) {
          handle(std::move(request), connection, response);
      }),
      listener_(std::move(parts.listener)) {
    delivery_->setCatchAll(settings.catchAll);
    listener_->start([this](Connection& connection) {
        if (!stream_.take(connection)) {
            front_.serve(connection);
        }
    });
}

DevServer::~DevServer() {
    // What waits or writes for long is told first; the listener then ends whatever is left.
    log_.close();
    endpoints_.stop();
    front_.stop();
    listener_->stop();
}

std::string DevServer::url() const { return urlOf(host_, port()); }

void DevServer::handle(IncomingRequest&& request, Connection& connection, httplib::Response& response) {
    if (request.path == "/" && (request.method == "GET" || request.method == "HEAD")) {
        LivePage::answer(response);
    } else if (request.path == "/_dev" || request.path.starts_with("/_dev/")) {
        devAPI_.handle(request, connection, response);
    } else if (request.path.starts_with(PushEndpoints::path)) {
        endpoints_.handle(request, response);
    } else {
        desk_.handle(std::move(request), connection, response);
    }
}

} // namespace zentavo::devserver
