#pragma once

#include <optional>
#include <string>

#include "zentavo/foundation/KeyedDecoder.h"
#include "zentavo/foundation/TextEncoding.h"

namespace zentavo {

/// A label under which messages of the inbox are grouped.
struct ZENTAVO_EXPORT Catalog {
    std::string catalogId;
    std::string catalogName;

    static Catalog decode(KeyedDecoder& decoder);

    /// The record as JSON under its keys; an error where its text is not UTF-8.
    Result<std::string> jsonData() const;
    /// The same as text: none instead of an error, and where `encoding` has not all of its characters.
    std::optional<std::string> jsonString(TextEncoding encoding = TextEncoding::utf8) const;

    friend bool operator==(const Catalog&, const Catalog&) = default;
};

} // namespace zentavo
