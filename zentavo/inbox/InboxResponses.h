#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "zentavo/inbox/Catalog.h"
#include "zentavo/inbox/InboxItem.h"
#include "zentavo/inbox/RecordLists.h"
#include "zentavo/tracking/HTTPResponse.h"

namespace zentavo {

/// The answers of the inbox service. All of them are read strictly, "data" first, then "code", then "message": the first
/// of them that is not as it should be is what the failure names. What lies in `data` beside the entries that are asked
/// for must have the same shape as they.

/// A page of messages.
struct InboxItemAPIResponse {
    using Record = InboxItem;

    std::map<std::string, std::vector<InboxItem>> data;
    HTTPResponse code{};
    std::string message;

    static InboxItemAPIResponse decode(KeyedDecoder& decoder, RecordLists<Record>& lists);
    /// Moves `data`'s "entries" out; empty where there are none.
    std::vector<InboxItem> entries() &&;
};

struct CatalogAPIResponse {
    using Record = Catalog;

    std::map<std::string, std::vector<Catalog>> data;
    HTTPResponse code{};
    std::string message;

    static CatalogAPIResponse decode(KeyedDecoder& decoder, RecordLists<Record>& lists);
    /// Moves `data`'s "entries" out; empty where there are none.
    std::vector<Catalog> entries() &&;
};

struct GetMessageByIdAPIResponse {
    InboxItem data;
    HTTPResponse code{};
    std::string message;

    static GetMessageByIdAPIResponse decode(KeyedDecoder& decoder);
};

struct UnreadMessageAPIResponse {
    std::map<std::string, std::int64_t> data;
    HTTPResponse code{};
    std::string message;

    static UnreadMessageAPIResponse decode(KeyedDecoder& decoder);
    /// `data`'s "total", or 0.
    std::int64_t total() const;
};

} // namespace zentavo
