#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace zentavo {

/// A key of a free-form map: text that the host chose, or a number and its decimal text.
struct AnyCodingKey {
    explicit AnyCodingKey(std::string text) : stringValue(std::move(text)) {}
    explicit AnyCodingKey(std::int64_t number) : stringValue(std::to_string(number)), intValue(number) {}

    std::string stringValue;
    std::optional<std::int64_t> intValue;
};

} // namespace zentavo
