#include "InboxVerbs.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string_view>

namespace console {

using namespace zentavo;

namespace {

constexpr const char* usualDestination = "77";
constexpr const char* usualAudience = "customer";

/// Completions run on the SDK's worker; a line is printed in one piece.
void print(const InboxItem& item) {
    std::printf("    message %s, status %lld: %s\n", item.itemId.c_str(), static_cast<long long>(item.status),
                item.heading.c_str());
    std::fflush(stdout);
}

} // namespace

bool runInboxVerb(const std::vector<std::string>& parts, Zentavo& sdk) {
    const std::string& what = parts[0];
    const auto part = [&](std::size_t i, const char* otherwise) { return i < parts.size() ? parts[i] : otherwise; };
    const auto from = [&](std::size_t first) {
        return std::vector<std::string>(parts.begin() + static_cast<std::ptrdiff_t>(std::min(first, parts.size())),
                                        parts.end());
    };
    if (what == "open") {
        sdk.appInboxInit(part(1, usualDestination), part(2, usualAudience));
        return true;
    }
    if (!Zentavo::appInbox()) {
        sdk.appInboxInit(usualDestination, usualAudience);
    }
    const auto inbox = Zentavo::appInbox();
    const std::map<std::string_view, std::function<void()>> calls{
        {"list",
         [&] {
             inbox->forceFetchInboxItem(from(2), std::atoll(part(1, "1").c_str()), [](std::vector<InboxItem> items) {
                 std::printf("    %zu messages\n", items.size());
                 for (const InboxItem& item : items) {
                     print(item);
                 }
             });
         }},
        {"catalogs",
         [&] {
             inbox->fetchAllCatalog([](const std::vector<Catalog>& catalogs) {
                 for (const Catalog& catalog : catalogs) {
                     std::printf("    catalog %s: %s\n", catalog.catalogId.c_str(), catalog.catalogName.c_str());
                 }
             });
         }},
        {"count",
         [&] {
             inbox->countUnreadMessage(
                 [](std::int64_t count) { std::printf("    %lld unread\n", static_cast<long long>(count)); });
         }},
        {"get", [&] { inbox->getMessageById(part(1, ""), print); }},
        {"read", [&] { inbox->modifyMessageStatus(from(1), ModifyAction::read); }},
        {"unread", [&] { inbox->modifyMessageStatus(from(1), ModifyAction::unread); }},
        {"remove", [&] { inbox->modifyMessageStatus(from(1), ModifyAction::remove); }},
        {"mark-all", [&] { inbox->markAllAsRead(); }},
    };
    const auto call = calls.find(what);
    if (call == calls.end()) {
        return false;
    }
    call->second();
    return true;
}

} // namespace console
