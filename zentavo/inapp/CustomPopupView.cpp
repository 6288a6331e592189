#include "zentavo/inapp/CustomPopupView.h"

#include <chrono>

#include "zentavo/foundation/Fault.h"

namespace zentavo {

void CustomPopupView::load(const std::string& templateHost, const std::string& portalId, const std::string& propsId) {
    const auto page = URL::parse(templateHost + "/html/index-mobile-border.html");
    if (!page || !page->isHTTP()) {
        fatalError("the template host is no URL: \"" + templateHost + "\"");
    }
    webView->load(page->withQueryItems({{"v", "2225"}, {"portalId", portalId}, {"propsId", propsId}}),
                  std::chrono::seconds(60));
}

} // namespace zentavo
