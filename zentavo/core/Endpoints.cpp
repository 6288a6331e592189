#include "zentavo/core/Endpoints.h"

namespace zentavo {

Endpoints Endpoints::all(std::string_view base) {
    while (!base.empty() && base.back() == '/') {
        base.remove_suffix(1);
    }
    Endpoints endpoints;
    endpoints.collection = base;
    endpoints.collectionSandbox = std::string(base) + "/sandbox";
    endpoints.push = base;
    endpoints.inbox = base;
    endpoints.delivery = base;
    endpoints.deliverySandbox = std::string(base) + "/sandbox";
    endpoints.templateHost = base;
    endpoints.mediaHost = base;
    return endpoints;
}

} // namespace zentavo
