#pragma once

#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"

namespace zentavo {

/// Where a deployment's services are: base URLs without a trailing slash. Paths belong to the operations. A base that is
/// no URL stops the process (see `FaultPolicy`) when a request is built with it; the inbox's only silences the inbox.
struct ZENTAVO_EXPORT Endpoints {
    std::string collection = "https://collection.zentavo.example";
    std::string collectionSandbox = "https://sandbox-collection.zentavo.example";
    std::string push = "https://push.zentavo.example";
    std::string inbox = "https://inbox.zentavo.example";
    std::string delivery = "https://delivery.zentavo.example";
    std::string deliverySandbox = "https://sandbox-delivery.zentavo.example";
    /// Serves the page that in-app messages of the visual editor run in.
    std::string templateHost = "https://templates.zentavo.example";
    /// Serves the icons that rich pushes name.
    std::string mediaHost = "https://media.zentavo.example";

    /// One server for everything, the sandbox twins under its path "/sandbox": the dev server.
    static Endpoints all(std::string_view base);

    /// The sandbox account goes to the sandbox hosts, and no other does.
    static bool isSandbox(std::string_view portalId) noexcept { return portalId == "33167"; }
    const std::string& collectionFor(std::string_view portalId) const noexcept {
        return isSandbox(portalId) ? collectionSandbox : collection;
    }
    const std::string& deliveryFor(std::string_view portalId) const noexcept {
        return isSandbox(portalId) ? deliverySandbox : delivery;
    }
};

} // namespace zentavo
