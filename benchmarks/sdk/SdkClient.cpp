#include "sdk/SdkClient.h"

namespace bench {

zentavo::CDPEvent SdkClient::makeEvent() {
    zentavo::CDPEvent event("view_product", {{{"sku", "SKU-20481-BLUE"}, {"price", 49.95}, {"quantity", 2}}});
    event.setEventProperties({{"list", "home"},
                              {"category", "shoes/running"},
                              {"brand", "Swift"},
                              {"currency", "EUR"},
                              {"position", 7},
                              {"available", true},
                              {"rating", 4.5}});
    return event;
}

} // namespace bench
