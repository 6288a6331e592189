#pragma once

#include <atomic>
#include <memory>

#include "devserver/Campaigns.h"
#include "devserver/DeliveryLog.h"
#include "devserver/PushLog.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// Takes what pages and apps report of a campaign: that it was shown, could be seen, was clicked. Answers with a pixel, or
/// with an object, which for a click has the attribution that the app is to keep. A click on a push is reported here too,
/// under the push's id ("push") instead of a story.
class TrackingService final : public Service {
public:
    TrackingService(std::shared_ptr<const Campaigns> campaigns, std::shared_ptr<DeliveryLog> log,
                    std::shared_ptr<PushLog> pushes)
        : campaigns_(std::move(campaigns)), log_(std::move(log)), pushes_(std::move(pushes)) {}

    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;

private:
    Answer pushClick(const IncomingRequest& request, Findings& findings);

    const std::shared_ptr<const Campaigns> campaigns_;
    const std::shared_ptr<DeliveryLog> log_;
    const std::shared_ptr<PushLog> pushes_;
    std::atomic<std::uint64_t> clicks_ = 0;
};

} // namespace zentavo::devserver
