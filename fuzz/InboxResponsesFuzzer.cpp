// Each input is read as each of the four answers of the inbox service. A message that can be read can be written, and what
// was written reads back as the same message.

#include <map>
#include <string>
#include <vector>

#include "fuzz/Check.h"
#include "zentavo/inbox/DecodingDiagnostic.h"
#include "zentavo/inbox/InboxAnswer.h"
#include "zentavo/inbox/InboxResponses.h"

namespace {

using namespace zentavo;

constexpr std::size_t longestDiagnostic = 4'000;

template <class Response>
Result<Response, DecodingFailure> read(std::string_view text) {
    std::size_t remarks = 0;
    auto response = readInboxAnswer<Response>(text, [&](const std::string&) { ++remarks; });
    check(remarks <= KeyedDecoder::maximumRemarks, "remarks are bounded");
    if (!response) {
        const DecodingFailure& failure = response.error();
        check(!failure.message.empty(), "a failure says why");
        check(failure.kind == DecodingFailure::Kind::dataCorrupted || !failure.subject.empty(),
              "a failure of the named kinds has a subject");
        check(diagnostic(failure).size() < longestDiagnostic, "a diagnostic is bounded");
    }
    return response;
}

/// The lists are read record by record; whoever reads all of it as values first comes to the same.
template <class Response>
void checkAgainstPlainReading(std::string_view text, const Result<Response, DecodingFailure>& response) {
    using Record = typename Response::Record;
    const auto source = json::readMap(text);
    if (!source) {
        return check(!response.ok(), "what is no JSON object is no answer");
    }
    KeyedDecoder decoder(*source);
    std::map<std::string, std::vector<Record>> lists;
    decoder.nested("data", [&](KeyedDecoder& data) {
        for (const auto& [key, value] : data.source()) {
            lists.emplace(key, data.nestedList(key, Record::decode));
        }
        return 0;
    });
    decodeHTTPResponse(decoder, "code");
    decoder.string("message");
    check(response.ok() == !decoder.failed(), "both ways end alike");
    if (response) {
        check(response->data.size() == lists.size(), "with as many lists");
        for (const auto& [key, records] : lists) {
            const auto found = response->data.find(key);
            check(found != response->data.end() && found->second == records, "of the same records");
        }
    } else {
        check(response.error().codingPath == decoder.failure()->codingPath, "or fail at the same place");
    }
}

void checkItem(const InboxItem& item) {
    const auto text = item.jsonString();
    check(text.has_value(), "a message that was read can be written");
    const auto map = json::readMap(*text);
    check(map.ok(), "what was written is JSON");
    KeyedDecoder decoder(*map);
    check(InboxItem::decode(decoder) == item && !decoder.failed(), "and reads back as the same message");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = textOf(data, size);
    auto page = read<InboxItemAPIResponse>(text);
    checkAgainstPlainReading(text, page);
    if (page) {
        for (const auto& [key, items] : page->data) {
            for (const InboxItem& item : items) {
                checkItem(item);
            }
        }
    }
    auto catalogs = read<CatalogAPIResponse>(text);
    checkAgainstPlainReading(text, catalogs);
    if (catalogs) {
        for (const Catalog& catalog : std::move(*catalogs).entries()) {
            check(catalog.jsonString().has_value(), "a catalog that was read can be written");
        }
    }
    if (const auto message = read<GetMessageByIdAPIResponse>(text)) {
        checkItem(message->data);
    }
    if (const auto count = read<UnreadMessageAPIResponse>(text)) {
        check(count->data.contains("total") || count->total() == 0, "without a total it is 0");
    }
    return 0;
}
