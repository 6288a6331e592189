#include "zentavo/foundation/DecimalInteger.h"

#include <charconv>

namespace zentavo {

std::optional<std::int64_t> decimalInteger(std::string_view text) noexcept {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

} // namespace zentavo
