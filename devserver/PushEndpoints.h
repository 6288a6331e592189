#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <httplib.h>

#include "devserver/Distributor.h"
#include "devserver/EndpointStore.h"
#include "devserver/IncomingRequest.h"
#include "devserver/PushLog.h"
#include "devserver/Slots.h"

namespace zentavo::devserver {

/// The endpoints that the distributor has given out: what is posted to one goes to its app. For any thread.
class PushEndpoints {
public:
    static constexpr std::string_view path = "/_push/";
    static constexpr std::size_t maximumMessage = 4'096;
    /// Posts that wait for an app at a time.
    static constexpr int maximumWaiting = 64;

    struct Posting {
        /// What the endpoint's URL ends in.
        std::string endpoint;
        std::string messageId;
        std::string bytes;
    };
    struct Outcome {
        static constexpr int delivered = 201;

        int status = delivered;
        /// Empty when it was delivered.
        std::string reason = {};
    };

    /// `base` is how the server is reached on this machine: "http://127.0.0.1:8787". Without `distributor`, `problem` says
    /// why there is none.
    PushEndpoints(std::string base, std::shared_ptr<EndpointStore> store, std::unique_ptr<Distributor> distributor,
                  std::string problem, std::shared_ptr<PushLog> log);

    /// What follows `path` in a URL of one of this server's endpoints, be it in use or not; none for any other URL.
    std::optional<std::string> idOf(std::string_view url) const;
    /// Waits for all apps at once, as long as the distributor's patience. One outcome for each posting.
    std::vector<Outcome> post(const std::vector<Posting>& postings);
    /// A request whose path begins with `path`.
    void handle(const IncomingRequest& request, httplib::Response& response);

    /// Ends a registration, or gives it another endpoint; the app is told. False when there is no such token.
    bool drop(std::string_view token);
    bool renew(std::string_view token);
    /// {"distributor": "runs" or why there is none, "registrations": […]}
    Map map() const;

    /// Ends every wait.
    void stop();

private:
    const std::string base_;
    const std::shared_ptr<EndpointStore> store_;
    /// Null when none runs.
    const std::unique_ptr<Distributor> distributor_;
    const std::string problem_;
    const std::shared_ptr<PushLog> log_;
    Slots waiting_{maximumWaiting};
};

} // namespace zentavo::devserver
