#include "devserver/TemplateHostService.h"

#include <array>

#include "devserver/BodyChecks.h"

namespace zentavo::devserver {

namespace {

constexpr std::array<QueryRule, 3> queryRules{{{"v", "2225"}, {"portalId"}, {"propsId"}}};

} // namespace

std::vector<Route> TemplateHostService::routes() const { return {{"GET", "/html/index-mobile-border.html"}}; }

Answer TemplateHostService::answer(const IncomingRequest& request, std::string_view, Twin, const Map&,
                                   Findings& findings) {
    checkQuery(request.query, queryRules, findings.problems);
    return {200, {}, std::string(page()), "text/html; charset=utf-8"};
}

std::string_view TemplateHostService::page() noexcept { return templateHostFiles().front().text; }

} // namespace zentavo::devserver
