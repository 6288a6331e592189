#include "zentavo/inapp/IntOrString.h"

namespace zentavo {

std::optional<IntOrString> IntOrString::decodeOptional(KeyedDecoder& decoder, std::string_view key) {
    auto value = decoder.optionalValue(key);
    if (!value) {
        return std::nullopt;
    }
    if (const auto integer = value->exactInt64()) {
        return IntOrString{*integer};
    }
    if (std::string* text = value->asString()) {
        return IntOrString{std::move(*text)};
    }
    decoder.mismatch(key, "an integer or text", *value);
    return std::nullopt;
}

} // namespace zentavo
