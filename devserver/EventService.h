#pragma once

#include <string>

#include "devserver/Service.h"

namespace zentavo::devserver {

/// Collects events, as the platform does, and is stricter than the platform about their shape.
class EventService final : public Service {
public:
    /// A non-empty `sessionId` stands in every answer.
    explicit EventService(std::string sessionId = {}) : sessionId_(std::move(sessionId)) {}

    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;

private:
    const std::string sessionId_;
};

} // namespace zentavo::devserver
