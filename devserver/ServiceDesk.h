#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "devserver/FaultPlan.h"
#include "devserver/FaultPlayer.h"
#include "devserver/RequestLog.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// Takes every request that is meant for the platform: finds its service, logs it with what is wrong, and answers it.
/// The log has the request before the client has its answer.
class ServiceDesk {
public:
    using Observer = std::function<void(const LoggedRequest&)>;

    /// `observer` may be null; it is called on the connection's thread for each logged request.
    ServiceDesk(RequestLog& log, FaultPlan& faults, std::vector<std::shared_ptr<Service>> services, Observer observer);

    void handle(IncomingRequest&& request, Connection& connection, httplib::Response& response);

    /// "POST /event", …: what there is to call.
    List available() const;

private:
    struct Entry {
        Route route;
        std::shared_ptr<Service> service;
    };

    Answer judge(LoggedRequest& logged, httplib::Response& response);
    Answer routeMissed(const IncomingRequest& request, std::string_view path, Findings& findings,
                       httplib::Response& response) const;

    RequestLog& log_;
    FaultPlan& faults_;
    std::vector<Entry> entries_;
    const Observer observer_;
    FaultPlayer player_;
};

} // namespace zentavo::devserver
