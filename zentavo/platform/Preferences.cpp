#include "zentavo/platform/Preferences.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "zentavo/foundation/JSON.h"

namespace zentavo::platform {

std::optional<std::string> Preferences::string(std::string_view key) const {
    auto stored = object(key);
    if (!stored) {
        return std::nullopt;
    }
    if (std::string* text = stored->asString()) {
        return std::move(*text);
    }
    if (const bool* flag = stored->asBool()) {
        return *flag ? "1" : "0";
    }
    if (stored->isNumber()) {
        if (auto text = json::write(*stored)) {
            return std::move(*text);
        }
    }
    return std::nullopt;
}

namespace {

double numberOf(const Value& stored) {
    if (const bool* flag = stored.asBool()) {
        return *flag ? 1 : 0;
    }
    if (const auto number = stored.number()) {
        return *number;
    }
    if (const std::string* text = stored.asString()) {
        const std::size_t first = text->find_first_not_of(" \t");
        if (first != std::string::npos) {
            double parsed = 0;
            const auto [end, error] = std::from_chars(text->data() + first, text->data() + text->size(), parsed);
            if (error == std::errc()) {
                return parsed;
            }
        }
    }
    return 0;
}

/// `number` without its fraction; beyond the 64-bit integers, the nearest of them.
std::int64_t wholePart(double number) {
    constexpr double beyond = 9223372036854775808.0; // 2^63
    if (number >= beyond) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (!(number >= -beyond)) { // also where it is no number
        return std::isnan(number) ? 0 : std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(number);
}

} // namespace

std::int64_t coercedInteger(const Value& stored) {
    const auto exact = stored.exactInt64();
    return exact ? *exact : wholePart(numberOf(stored));
}

double Preferences::number(std::string_view key) const {
    const auto stored = object(key);
    return stored ? numberOf(*stored) : 0;
}

std::int64_t Preferences::integer(std::string_view key) const {
    const auto stored = object(key);
    return stored ? coercedInteger(*stored) : 0;
}

std::optional<Map> Preferences::map(std::string_view key) const {
    auto stored = object(key);
    if (!stored || stored->asMap() == nullptr) {
        return std::nullopt;
    }
    return std::move(*stored->asMap());
}

bool isSuiteName(std::string_view name, std::string_view ownIdentifier) noexcept {
    return !name.empty() && name != ownIdentifier && name.find('/') == std::string_view::npos &&
           name.find('\0') == std::string_view::npos;
}

} // namespace zentavo::platform
