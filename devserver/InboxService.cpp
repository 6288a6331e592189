#include "devserver/InboxService.h"

#include <array>

#include "devserver/BodyChecks.h"
#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

constexpr std::string_view pagePath = "/access/api/app-inbox/message/performance";
constexpr std::string_view catalogPath = "/access/api/app-inbox/catalog/performance";
constexpr std::string_view countPath = "/access/api/app-inbox/message/count-unread";
/// Both slashes: the first ends the service's own path, the second comes from its clients.
constexpr std::string_view messagePath = "/access/api/app-inbox/message//";
constexpr std::string_view modifyPath = "/access/api/app-inbox/message";
constexpr std::string_view markAllPath = "/access/api/app-inbox/message/mark-all-as-read";

constexpr MemberRule lookupId{"lookupId", Kind::filledText};
constexpr MemberRule lookupType{"lookupType", Kind::filledText};
constexpr MemberRule portalId{"portalId", Kind::integer};
constexpr MemberRule destinationId{"destinationId", Kind::integer};

constexpr std::array pageRules{lookupId,
                               lookupType,
                               portalId,
                               MemberRule{"catalogs", Kind::listOfTexts},
                               destinationId,
                               MemberRule{"page", Kind::integer},
                               MemberRule{"limit", Kind::integer},
                               MemberRule{"source", Kind::text}};
constexpr std::array plainRules{lookupId, lookupType, portalId, destinationId};
constexpr std::array messageRules{lookupId, lookupType, portalId};
constexpr std::array modifyRules{MemberRule{"ids", Kind::listOfTexts},
                                 MemberRule{"status", Kind::integer},
                                 MemberRule{"destination_id", Kind::integer},
                                 lookupId,
                                 lookupType,
                                 portalId};

constexpr std::int64_t longestPage = 1'000;
constexpr std::int64_t lastPage = 1'000'000;

/// These read what the rules have found to be there.
InboxUser userIn(const Map& body) { return {*textMember(body, "lookupType"), *textMember(body, "lookupId")}; }
std::int64_t integerIn(const Map& body, std::string_view key) { return *body.find(key)->exactInt64(); }
std::vector<std::string> textsIn(const Map& body, std::string_view key) {
    std::vector<std::string> texts;
    for (const Value& text : *body.find(key)->asList()) {
        texts.push_back(*text.asString());
    }
    return texts;
}

/// True when the body keeps to the rules.
bool isRight(const Map& body, std::span<const MemberRule> rules, Findings& findings) {
    Problems& problems = findings.problems;
    checkMembers(body, "", rules, Others::refused, problems);
    const Value* portal = body.find("portalId");
    if (portal != nullptr && portal->exactInt64() == 0) {
        problems.add("portalId is 0; the app had no portal id when it asked");
    }
    return problems.empty();
}

void checkRange(const Map& body, std::string_view key, std::int64_t least, std::int64_t most, Problems& problems) {
    const std::int64_t number = integerIn(body, key);
    if (number < least || number > most) {
        problems.add(std::string(key) + " is " + std::to_string(number) + "; expected " + std::to_string(least) +
                     " to " + std::to_string(most));
    }
}

Answer success(Value data) { return {200, {{"code", 200}, {"message", "success"}, {"data", std::move(data)}}}; }

} // namespace

std::vector<Route> InboxService::routes() const {
    return {{"POST", pagePath},  {"POST", catalogPath},
            {"POST", countPath}, {"POST", messagePath, Route::Covers::below},
            {"PUT", modifyPath}, {"PUT", markAllPath}};
}

Answer InboxService::answer(const IncomingRequest& request, std::string_view path, Twin, const Map& body,
                            Findings& findings) {
    const std::string* type = textMember(body, "lookupType");
    if (const std::string* id = textMember(body, "lookupId")) {
        (type != nullptr && *type == "customer" ? findings.customer : findings.uid) = *id;
    }
    if (path == catalogPath) {
        return catalogs(request, body, findings);
    }
    checkQuery(request.query, {}, findings.problems);
    if (path == pagePath) {
        return page(body, findings);
    }
    if (path == countPath) {
        return count(body, findings);
    }
    if (path == modifyPath) {
        return modify(body, findings);
    }
    if (path == markAllPath) {
        return markAllAsRead(body, findings);
    }
    const std::string_view id = ServicePath::of(request.path).path.substr(messagePath.size());
    return message(URL::decodeComponent(id).value_or(std::string(id)), body, findings);
}

Answer InboxService::page(const Map& body, Findings& findings) const {
    if (!isRight(body, pageRules, findings)) {
        return {};
    }
    Problems& problems = findings.problems;
    checkRange(body, "page", 1, lastPage, problems);
    checkRange(body, "limit", 1, longestPage, problems);
    if (const std::string& source = *textMember(body, "source"); source != "mobile") {
        problems.add("source is " + inQuotes(source) + "; expected \"mobile\"");
    }
    if (!problems.empty()) {
        return {};
    }
    return success(
        Map{{"entries", store_->page({userIn(body), integerIn(body, "destinationId"), textsIn(body, "catalogs"),
                                      integerIn(body, "page"), integerIn(body, "limit")})}});
}

Answer InboxService::catalogs(const IncomingRequest& request, const Map& body, Findings& findings) const {
    const bool right = isRight(body, plainRules, findings);
    const std::string network = right ? std::to_string(integerIn(body, "portalId")) : "";
    const std::array<QueryRule, 1> queryRules{{{"_network_id", network}}};
    checkQuery(request.query, queryRules, findings.problems);
    return success(Map{{"entries", store_->catalogs()}});
}

Answer InboxService::count(const Map& body, Findings& findings) const {
    if (!isRight(body, plainRules, findings)) {
        return {};
    }
    return success(Map{{"total", store_->unreadCount(userIn(body), integerIn(body, "destinationId"))}});
}

Answer InboxService::message(const std::string& id, const Map& body, Findings& findings) const {
    if (!isRight(body, messageRules, findings)) {
        return {};
    }
    if (auto item = store_->item(userIn(body), id)) {
        return success(*std::move(item));
    }
    return {404, {{"code", 404}, {"message", "this user has no message " + inQuotes(id)}, {"data", nullptr}}};
}

Answer InboxService::modify(const Map& body, Findings& findings) const {
    if (!isRight(body, modifyRules, findings)) {
        return {};
    }
    Problems& problems = findings.problems;
    checkRange(body, "status", 1, 3, problems);
    const InboxUser user = userIn(body);
    const std::int64_t destination = integerIn(body, "destination_id");
    const std::vector<std::string> ids = textsIn(body, "ids");
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (!store_->canSee(user, destination, ids[i])) {
            problems.add("ids[" + std::to_string(i) + "] is " + inQuotes(ids[i]) +
                         "; this user has no such message at " + std::to_string(destination));
        }
    }
    if (!problems.empty()) {
        return {};
    }
    store_->setStatus(user, ids, static_cast<InboxStatus>(integerIn(body, "status")));
    return success(Map{{"modified", static_cast<std::int64_t>(ids.size())}});
}

Answer InboxService::markAllAsRead(const Map& body, Findings& findings) const {
    if (!isRight(body, plainRules, findings)) {
        return {};
    }
    store_->markAllAsRead(userIn(body), integerIn(body, "destinationId"));
    return success(Map());
}

Map InboxService::everything() const { return {{"catalogs", store_->catalogs()}, {"messages", store_->everything()}}; }

std::string InboxService::add(const Map& message, Problems& problems) {
    return InboxMessages(*store_).add(message, "", problems);
}

} // namespace zentavo::devserver
