// A URL's text parses to the same URL, and query items travel through a URL unchanged.

#include <algorithm>
#include <string>

#include "fuzz/Check.h"
#include "zentavo/foundation/URL.h"
#include "zentavo/foundation/UTF8.h"

using zentavo::QueryItem;
using zentavo::URL;

namespace {

constexpr std::size_t longestParsed = 64U << 10U;

void checkParsesToItself(const URL& url) {
    if (url.text().size() > longestParsed) {
        return; // made longer by its query items than a parsed one may be
    }
    const auto again = URL::parse(url.text());
    check(again && *again == url, "the text of a URL is that URL");
    check(again->scheme() == url.scheme() && again->userInfo() == url.userInfo() && again->host() == url.host() &&
              again->port() == url.port() && again->path() == url.path() && again->query() == url.query() &&
              again->fragment() == url.fragment(),
          "and has its parts");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = textOf(data, size);
    check(URL::decodeComponent(URL::encodeComponent(text)) == text, "components come back");

    const auto url = URL::parse(text);
    if (!url) {
        return 0;
    }
    check(std::all_of(url->text().begin(), url->text().end(), [](char c) { return c > ' ' && c < 0x7F; }),
          "a URL is printable ASCII");
    checkParsesToItself(*url);
    check(!url->isHTTP() || !url->host().empty(), "http has a host");
    check(url->pathExtension().find('/') == std::string::npos, "an extension names no folder");

    const auto items = url->queryItems();
    check(items.empty() == !url->query().has_value(), "a query has items");
    const URL same = url->withQueryItems(items);
    check(same.queryItems() == items, "query items come back");
    checkParsesToItself(same);
    checkParsesToItself(url->withQueryItems({}));

    if (zentavo::utf8::isValid(text)) {
        const std::vector<QueryItem> own{{std::string(text), std::string(text)}, {std::string(text), std::nullopt}};
        const URL asked = url->withQueryItems(own);
        check(asked.queryItems() == own, "any text is a query item");
        checkParsesToItself(asked);
    }
    return 0;
}
