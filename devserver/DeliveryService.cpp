#include "devserver/DeliveryService.h"

#include "devserver/BodyChecks.h"

namespace zentavo::devserver {

std::vector<Route> DeliveryService::routes() const { return {{"POST", "/interaction/v2"}}; }

Answer DeliveryService::answer(const IncomingRequest&, std::string_view, Twin, const Map& body, Findings& findings) {
    const std::string* format = textMember(body, "format");
    if (format == nullptr || *format != "json") {
        findings.problems.add("format is missing; expected \"json\"");
    }
    if (const std::string* name = textMember(body, "en")) {
        findings.event = *name;
    }
    return {200, {{"webContents", Map()}}};
}

} // namespace zentavo::devserver
