#include "zentavo/platform/Preferences.h"

#include <charconv>

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

double Preferences::number(std::string_view key) const {
    const auto stored = object(key);
    if (!stored) {
        return 0;
    }
    if (const bool* flag = stored->asBool()) {
        return *flag ? 1 : 0;
    }
    if (const auto number = stored->number()) {
        return *number;
    }
    if (const std::string* text = stored->asString()) {
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
