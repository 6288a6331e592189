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

std::optional<std::string> Catalog::jsonString(TextEncoding encoding) const {
    return json::textIn(encoding, jsonData());
}

} // namespace zentavo
