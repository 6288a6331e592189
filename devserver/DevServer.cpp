#include "devserver/DevServer.h"

#include <utility>

#include "devserver/EventService.h"
#include "devserver/LivePage.h"
#include "devserver/MediaTemplateService.h"
#include "devserver/TemplateHostService.h"
#include "devserver/TrackingService.h"

namespace zentavo::devserver {

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
    auto listener = Listener::open(settings.host, settings.port);
    if (!listener) {
        return listener.error();
    }
    return std::unique_ptr<DevServer>(
        new DevServer(settings, *std::move(inbox), *std::move(campaigns), *std::move(listener)));
}

DevServer::DevServer(const Settings& settings, std::unique_ptr<InboxStore> inbox, Campaigns campaigns,
                     std::unique_ptr<Listener> listener)
    : host_(settings.host), log_(settings.logBounds), push_(std::make_shared<PushRegistrationService>()),
      inbox_(std::make_shared<InboxService>(std::move(inbox))),
      campaigns_(std::make_shared<const Campaigns>(std::move(campaigns))), deliveries_(std::make_shared<DeliveryLog>()),
      delivery_(std::make_shared<DeliveryService>(campaigns_, deliveries_)),
      desk_(log_, faults_,
            {std::make_shared<EventService>(settings.sessionId), push_, delivery_,
             std::make_shared<MediaTemplateService>(campaigns_, deliveries_),
             std::make_shared<TrackingService>(campaigns_, deliveries_), std::make_shared<TemplateHostService>(),
             inbox_},
            settings.observer),
      devAPI_({log_, faults_, *push_, *inbox_, *campaigns_, *deliveries_, *delivery_}),
      front_([this](IncomingRequest&& request, Connection& connection, httplib::Response& response) {
          handle(std::move(request), connection, response);
      }),
      listener_(std::move(listener)) {
    delivery_->setCatchAll(settings.catchAll);
    listener_->start([this](Connection& connection) { front_.serve(connection); });
}

DevServer::~DevServer() {
    // What waits or writes for long is told first; the listener then ends whatever is left.
    log_.close();
    front_.stop();
    listener_->stop();
}

std::string DevServer::url() const {
    const bool isIPv6 = host_.find(':') != std::string::npos;
    return "http://" + (isIPv6 ? "[" + host_ + "]" : host_) + ":" + std::to_string(port());
}

void DevServer::handle(IncomingRequest&& request, Connection& connection, httplib::Response& response) {
    if (request.path == "/" && (request.method == "GET" || request.method == "HEAD")) {
        LivePage::answer(response);
    } else if (request.path == "/_dev" || request.path.starts_with("/_dev/")) {
        devAPI_.handle(request, connection, response);
    } else {
        desk_.handle(std::move(request), connection, response);
    }
}

} // namespace zentavo::devserver
