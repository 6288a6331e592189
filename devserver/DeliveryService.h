#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "devserver/Campaigns.h"
#include "devserver/DeliveryLog.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// Answers which in-app messages are due for an event, and which content for one that the host shows itself.
class DeliveryService final : public Service {
public:
    DeliveryService(std::shared_ptr<const Campaigns> campaigns, std::shared_ptr<DeliveryLog> log)
        : campaigns_(std::move(campaigns)), log_(std::move(log)) {}

    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;

    /// Whether the campaigns for "*" are offered for any event.
    bool catchAll() const noexcept { return catchAll_; }
    void setCatchAll(bool on) noexcept { catchAll_ = on; }

private:
    Answer deliver(const IncomingRequest& request, Twin twin, const Map& body, Findings& findings);
    Answer media(const IncomingRequest& request, Twin twin, const Map& body, Findings& findings) const;

    const std::shared_ptr<const Campaigns> campaigns_;
    const std::shared_ptr<DeliveryLog> log_;
    std::atomic<bool> catchAll_ = false;
};

/// Where the client reached this server: "http://127.0.0.1:8787".
std::string serverURL(const IncomingRequest& request);

} // namespace zentavo::devserver
