#include "devserver/LivePage.h"

#include <string>

namespace zentavo::devserver {

void LivePage::answer(httplib::Response& response) {
    // Even if request data were ever taken for markup, it could load nothing and send nothing away.
    response.set_header("Content-Security-Policy",
                        "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; "
                        "connect-src 'self'; img-src data:; base-uri 'none'; form-action 'none'; "
                        "frame-ancestors 'none'");
    response.set_header("Cache-Control", "no-store");
    response.status = 200;
    response.set_content(std::string(html()), "text/html; charset=utf-8");
}

} // namespace zentavo::devserver
