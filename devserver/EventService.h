#pragma once

#include <memory>
#include <string>

#include "devserver/PushLog.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// Collects events, as the platform does, and is stricter than the platform about their shape. A rating of a push is noted
/// with the push.
class EventService final : public Service {
public:
    /// A non-empty `sessionId` stands in every answer.
    explicit EventService(std::string sessionId = {}, std::shared_ptr<PushLog> pushes = std::make_shared<PushLog>())
        : sessionId_(std::move(sessionId)), pushes_(std::move(pushes)) {}

    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;

private:
    const std::string sessionId_;
    const std::shared_ptr<PushLog> pushes_;
};

} // namespace zentavo::devserver
