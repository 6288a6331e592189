#include "zentavo/foundation/Value.h"

#include <cmath>

namespace zentavo {

std::optional<std::int64_t> Value::exactInt64() const noexcept {
    if (const auto* integer = asInteger()) {
        return *integer;
    }
    const auto* real = asDouble();
    // 2^63 itself is a double and is the first that does not fit; NaN fails both comparisons.
    if (real == nullptr || !(*real >= -0x1p63 && *real < 0x1p63) || std::trunc(*real) != *real) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(*real);
}

std::optional<double> Value::number() const noexcept {
    if (const auto* integer = asInteger()) {
        return static_cast<double>(*integer);
    }
    if (const auto* real = asDouble()) {
        return *real;
    }
    return std::nullopt;
}

const char* Value::kindName() const noexcept {
    static constexpr const char* names[] = {"null", "a boolean", "a number", "a number", "text", "a list", "a map"};
    return names[data_.index()];
}

bool operator==(const Value& a, const Value& b) noexcept {
    if (a.data_.index() == b.data_.index()) {
        return a.data_ == b.data_;
    }
    // Not by way of double: 2^53 and 2^53 + 1 would be the same number there.
    const auto* integer = a.asInteger() != nullptr ? a.asInteger() : b.asInteger();
    const Value& other = a.asInteger() != nullptr ? b : a;
    return integer != nullptr && other.asDouble() != nullptr && other.exactInt64() == *integer;
}

} // namespace zentavo
