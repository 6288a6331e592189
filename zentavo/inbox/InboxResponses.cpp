#include "zentavo/inbox/InboxResponses.h"

namespace zentavo {

namespace {

const char* const entriesKey = "entries";

template <class Response>
void decodeRest(KeyedDecoder& decoder, Response& response) {
    response.code = decodeHTTPResponse(decoder, "code");
    response.message = decoder.string("message");
}

/// The map under "data", `read(decoder, key)` giving the value of each of its members.
template <class Content, class Read>
std::map<std::string, Content> decodeData(KeyedDecoder& decoder, Read read) {
    return decoder.nested("data", [&](KeyedDecoder& data) {
        std::map<std::string, Content> members;
        for (const auto& [key, value] : data.source()) {
            if (data.failed()) {
                break;
            }
            members.emplace(key, read(data, key));
        }
        return members;
    });
}

template <class Record>
std::map<std::string, std::vector<Record>> decodeLists(KeyedDecoder& decoder) {
    return decodeData<std::vector<Record>>(
        decoder, [](KeyedDecoder& data, const std::string& key) { return data.nestedList(key, Record::decode); });
}

template <class Record>
std::vector<Record> takeEntries(std::map<std::string, std::vector<Record>>& data) {
    const auto found = data.find(entriesKey);
    return found != data.end() ? std::move(found->second) : std::vector<Record>();
}

} // namespace

InboxItemAPIResponse InboxItemAPIResponse::decode(KeyedDecoder& decoder) {
    InboxItemAPIResponse response;
    response.data = decodeLists<InboxItem>(decoder);
    decodeRest(decoder, response);
    return response;
}

std::vector<InboxItem> InboxItemAPIResponse::entries() && { return takeEntries(data); }

CatalogAPIResponse CatalogAPIResponse::decode(KeyedDecoder& decoder) {
    CatalogAPIResponse response;
    response.data = decodeLists<Catalog>(decoder);
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
    response.data = decodeData<std::int64_t>(
        decoder, [](KeyedDecoder& counts, const std::string& key) { return counts.integer(key); });
    decodeRest(decoder, response);
    return response;
}

std::int64_t UnreadMessageAPIResponse::total() const {
    const auto found = data.find("total");
    return found != data.end() ? found->second : 0;
}

} // namespace zentavo
