#include "zentavo/inbox/Catalog.h"

#include "zentavo/foundation/JSON.h"

namespace zentavo {

Catalog Catalog::decode(KeyedDecoder& decoder) {
    Catalog catalog;
    catalog.catalogId = decoder.string("catalogId");
    catalog.catalogName = decoder.string("catalogName");
    return catalog;
}

Result<std::string> Catalog::jsonData() const {
    return json::write(Map{{"catalogId", catalogId}, {"catalogName", catalogName}});
}

std::optional<std::string> Catalog::jsonString() const {
    auto text = jsonData();
    return text ? std::optional(*std::move(text)) : std::nullopt;
}

} // namespace zentavo
