#include "devserver/QueryReader.h"

#include <algorithm>
#include <charconv>

#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

template <class Number>
std::optional<Number> read(const std::string& text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

} // namespace

const QueryItem* QueryReader::take(std::string_view name) {
    asked_.push_back(name);
    const auto item = std::ranges::find(items_, name, &QueryItem::name);
    return item != items_.end() ? &*item : nullptr;
}

std::optional<std::string> QueryReader::text(std::string_view name) {
    const QueryItem* item = take(name);
    return item != nullptr ? std::optional(item->value.value_or("")) : std::nullopt;
}

std::optional<std::int64_t> QueryReader::number(std::string_view name, std::int64_t least, std::int64_t most) {
    const auto given = text(name);
    if (!given) {
        return std::nullopt;
    }
    const auto value = read<std::int64_t>(*given);
    if (!value || *value < least || *value > most) {
        problems_.add(std::string(name) + " is " + inQuotes(*given) + "; expected a whole number from " +
                      std::to_string(least) + " to " + std::to_string(most));
        return std::nullopt;
    }
    return value;
}

std::optional<double> QueryReader::decimal(std::string_view name, double least, double most) {
    const auto given = text(name);
    if (!given) {
        return std::nullopt;
    }
    const auto value = read<double>(*given);
    if (!value || !(*value >= least && *value <= most)) {
        problems_.add(std::string(name) + " is " + inQuotes(*given) + "; expected a number from " +
                      std::to_string(static_cast<std::int64_t>(least)) + " to " +
                      std::to_string(static_cast<std::int64_t>(most)));
        return std::nullopt;
    }
    return value;
}

bool QueryReader::flag(std::string_view name) {
    const auto given = text(name);
    if (!given || *given == "0" || *given == "false") {
        return false;
    }
    if (!given->empty() && *given != "1" && *given != "true") {
        problems_.add(std::string(name) + " is " + inQuotes(*given) + "; expected 1 or 0");
    }
    return true;
}

std::optional<std::string> QueryReader::word(std::string_view name, std::initializer_list<std::string_view> words) {
    auto given = text(name);
    if (!given || std::ranges::find(words, *given) != words.end()) {
        return given;
    }
    std::string expected;
    for (const std::string_view word : words) {
        expected += (expected.empty() ? "" : ", ") + std::string(word);
    }
    problems_.add(std::string(name) + " is " + inQuotes(*given) + "; expected one of " + expected);
    return std::nullopt;
}

void QueryReader::finish() {
    for (auto item = items_.begin(); item != items_.end(); ++item) {
        if (std::ranges::find(asked_, item->name) == asked_.end()) {
            problems_.add("parameter " + inQuotes(item->name) + " is unknown here");
        } else if (std::find_if(items_.begin(), item,
                                [&](const QueryItem& earlier) { return earlier.name == item->name; }) != item) {
            problems_.add("parameter " + inQuotes(item->name) + " comes more than once");
        }
    }
}

} // namespace zentavo::devserver
