#pragma once

#include "devserver/Service.h"

namespace zentavo::devserver {

/// Answers which in-app messages are due: none, until it is given campaigns.
class DeliveryService final : public Service {
public:
    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;
};

} // namespace zentavo::devserver
