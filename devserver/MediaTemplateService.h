#pragma once

#include <memory>

#include "devserver/Campaigns.h"
#include "devserver/DeliveryLog.h"
#include "devserver/ProofCheck.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// Tells how a hand-written campaign is laid out, and to those who sign, what it shows.
class MediaTemplateService final : public Service {
public:
    MediaTemplateService(std::shared_ptr<const Campaigns> campaigns, std::shared_ptr<DeliveryLog> log)
        : campaigns_(std::move(campaigns)), log_(std::move(log)) {}

    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;

private:
    Answer content(const IncomingRequest& request, const Campaign* campaign, std::int64_t story, Findings& findings);

    const std::shared_ptr<const Campaigns> campaigns_;
    const std::shared_ptr<DeliveryLog> log_;
    ProofCheck proofs_;
};

} // namespace zentavo::devserver
