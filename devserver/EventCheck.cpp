#include "devserver/EventCheck.h"

#include <array>
#include <vector>

#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

constexpr std::array<MemberRule, 10> bodyRules{{
    {"dims", Kind::map},
    {"extra", Kind::map},
    {"context", Kind::map},
    {"uid", Kind::text},
    {"en", Kind::filledText},
    {"items", Kind::listOfMaps},
    {"portal_id", Kind::text},
    {"prop_id", Kind::text},
    {"resp_type", Kind::text},
    {"identify_type", Kind::filledText},
}};

constexpr std::array<MemberRule, 2> dimsRules{{
    {"users", Kind::map, Need::optional},
    {"customers", Kind::map, Need::optional},
}};

/// What the SDK always adds. All else in "extra" may be a host's own property, of any kind.
constexpr std::array<MemberRule, 2> extraRules{{
    {"identify_type", Kind::filledText},
    {"visitor_type", Kind::text},
}};

constexpr std::array<MemberRule, 11> contextRules{{
    {"library", Kind::map},
    {"app", Kind::map},
    {"device", Kind::map},
    {"os", Kind::map},
    {"screen", Kind::map},
    {"locale", Kind::text},
    {"timezone", Kind::text},
    {"location", Kind::map},
    {"network", Kind::any},
    {"userAgent", Kind::text},
    {"instanceId", Kind::filledText},
}};

constexpr std::array<MemberRule, 2> libraryRules{{{"name", Kind::filledText}, {"version", Kind::filledText}}};
constexpr std::array<MemberRule, 4> appRules{
    {{"name", Kind::text}, {"version", Kind::text}, {"build", Kind::text}, {"namespace", Kind::text}}};
constexpr std::array<MemberRule, 5> deviceRules{{{"manufacturer", Kind::text},
                                                 {"type", Kind::text},
                                                 {"model", Kind::text},
                                                 {"name", Kind::text},
                                                 {"id", Kind::text}}};
constexpr std::array<MemberRule, 2> osRules{{{"name", Kind::text}, {"version", Kind::text}}};
constexpr std::array<MemberRule, 2> screenRules{{{"width", Kind::number}, {"height", Kind::number}}};
constexpr std::array<MemberRule, 3> locationRules{
    {{"lat", Kind::number}, {"long", Kind::number}, {"type", Kind::text}}};

void checkDims(const Map& dims, Problems& problems) {
    checkMembers(dims, "dims", dimsRules, Others::refused, problems);
    for (const Map::Entry& entry : dims) {
        if (const Map* map = entry.value.asMap(); map != nullptr && map->empty()) {
            problems.add("dims: " + inQuotes(entry.key) + " is empty; it is left out when it has no content");
        }
    }
}

void checkContext(const Map& context, Problems& problems) {
    checkMembers(context, "context", contextRules, Others::refused, problems);
    const auto inside = [&](std::string_view name, std::span<const MemberRule> rules) {
        if (const Map* map = mapMember(context, name)) {
            checkMembers(*map, "context." + std::string(name), rules, Others::accepted, problems);
        }
    };
    inside("library", libraryRules);
    inside("app", appRules);
    inside("device", deviceRules);
    inside("os", osRules);
    inside("screen", screenRules);
    inside("location", locationRules);
}

/// What stands in two places of one request must be the same in both.
void checkAgreement(const IncomingRequest& request, const Map& body, Problems& problems) {
    for (const std::string_view id : {"portal_id", "prop_id"}) {
        const std::string* inQuery = queryValue(request.query, id);
        const std::string* inBody = textMember(body, id);
        if (inQuery != nullptr && inBody != nullptr && *inQuery != *inBody) {
            problems.add(std::string(id) + " is " + inQuotes(*inBody) + " in the body and " + inQuotes(*inQuery) +
                         " in the query");
        }
    }
    const std::string* answerKind = textMember(body, "resp_type");
    if (answerKind != nullptr && *answerKind != "json") {
        problems.add("resp_type is " + inQuotes(*answerKind) + "; expected \"json\"");
    }
    const Map* extra = mapMember(body, "extra");
    const std::string* outer = textMember(body, "identify_type");
    const std::string* inner = extra != nullptr ? textMember(*extra, "identify_type") : nullptr;
    if (outer != nullptr && inner != nullptr && *outer != *inner) {
        problems.add("identify_type is " + inQuotes(*outer) + " and extra.identify_type is " + inQuotes(*inner));
    }
}

void checkTwin(const Map& body, std::string_view path, Twin twin, Problems& problems) {
    const std::string* portal = textMember(body, "portal_id");
    if (portal == nullptr || (*portal == sandboxPortal) == (twin == Twin::sandbox)) {
        return;
    }
    problems.add("portal " + inQuotes(*portal) + " belongs to " +
                 (twin == Twin::production ? "the sandbox: /sandbox" : "production: ") + std::string(path));
}

std::string shown(const Map* map, std::string_view name) {
    const std::string* text = map != nullptr ? textMember(*map, name) : nullptr;
    return text != nullptr ? *text : std::string();
}

} // namespace

void describeEvent(const Map& body, Findings& findings) {
    findings.event = shown(&body, "en");
    findings.uid = shown(&body, "uid");
    findings.screen = shown(mapMember(body, "extra"), "screen_name");
    const Map* dims = mapMember(body, "dims");
    findings.customer = shown(dims != nullptr ? mapMember(*dims, "customers") : nullptr, "customer_id");
}

void checkEvent(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                std::span<const MemberRule> more, Problems& problems) {
    std::vector<MemberRule> rules(bodyRules.begin(), bodyRules.end());
    rules.insert(rules.end(), more.begin(), more.end());
    checkMembers(body, "", rules, Others::refused, problems);
    if (const Map* dims = mapMember(body, "dims")) {
        checkDims(*dims, problems);
    }
    if (const Map* extra = mapMember(body, "extra")) {
        checkMembers(*extra, "extra", extraRules, Others::accepted, problems);
    }
    if (const Map* context = mapMember(body, "context")) {
        checkContext(*context, problems);
    }
    checkAgreement(request, body, problems);
    checkTwin(body, path, twin, problems);
}

} // namespace zentavo::devserver
