#include "zentavo/inbox/InboxResponses.h"

namespace zentavo {

namespace {

const char* const entriesKey = "entries";

template <class Response>
void decodeRest(KeyedDecoder& decoder, Response& response) {
    response.code = decodeHTTPResponse(decoder, "code");
    response.message = decoder.string("message");
}

template <class Record>
std::vector<Record> takeEntries(std::map<std::string, std::vector<Record>>& data) {
    const auto found = data.find(entriesKey);
    return found != data.end() ? std::move(found->second) : std::vector<Record>();
}

} // namespace

InboxItemAPIResponse InboxItemAPIResponse::decode(KeyedDecoder& decoder, RecordLists<Record>& lists) {
    InboxItemAPIResponse response;
    response.data = decoder.nested("data", [&](KeyedDecoder& members) { return lists.in(members); });
    decodeRest(decoder, response);
    return response;
}

std::vector<InboxItem> InboxItemAPIResponse::entries() && { return takeEntries(data); }

CatalogAPIResponse CatalogAPIResponse::decode(KeyedDecoder& decoder, RecordLists<Record>& lists) {
    CatalogAPIResponse response;
    response.data = decoder.nested("data", [&](KeyedDecoder& members) { return lists.in(members); });
    decodeRest(decoder, response);
    return response;
}

std::vector<Catalog> CatalogAPIResponse::entries() && { return takeEntries(data); }

GetMessageByIdAPIResponse GetMessageByIdAPIResponse::decode(KeyedDecoder& decoder) {
    GetMessageByIdAPIResponse response;
    response.data = decoder.nested("data", InboxItem::decode);
    decodeRest(decoder, response);
    return response;
}

UnreadMessageAPIResponse UnreadMessageAPIResponse::decode(KeyedDecoder& decoder) {
    UnreadMessageAPIResponse response;
    response.data = decoder.nested("data", [](KeyedDecoder& members) {
        std::map<std::string, std::int64_t> counts;
        for (const auto& [key, value] : members.source()) {
            counts.emplace(key, members.integer(key));
        }
        return counts;
    });
    decodeRest(decoder, response);
    return response;
}

std::int64_t UnreadMessageAPIResponse::total() const {
    const auto found = data.find("total");
    return found != data.end() ? found->second : 0;
}

} // namespace zentavo
