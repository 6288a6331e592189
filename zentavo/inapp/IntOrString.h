#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

/// A length as template layouts hold it: a bare number, or text such as "12px".
struct IntOrString {
    std::variant<std::int64_t, std::string> content;

    /// None when there is nothing under `key`; what is neither an integer nor text fails the record.
    static std::optional<IntOrString> decodeOptional(KeyedDecoder& decoder, std::string_view key);

    const std::int64_t* asInt() const noexcept { return std::get_if<std::int64_t>(&content); }
    const std::string* asString() const noexcept { return std::get_if<std::string>(&content); }
};

} // namespace zentavo
