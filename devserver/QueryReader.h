#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/Problems.h"
#include "zentavo/foundation/URL.h"

namespace zentavo::devserver {

/// Reads the parameters of the server's own interface, strictly: a parameter that nobody asked for, that comes twice or
/// that is out of bounds is a problem, so that a typing error in a test does not pass for "no filter".
class QueryReader {
public:
    QueryReader(const std::vector<QueryItem>& items, Problems& problems) : items_(items), problems_(problems) {}

    std::optional<std::string> text(std::string_view name);
    /// A whole number within [least, most].
    std::optional<std::int64_t> number(std::string_view name, std::int64_t least, std::int64_t most);
    /// As `number`, in decimal fractions.
    std::optional<double> decimal(std::string_view name, double least, double most);
    /// "1", "true" or no value at all; "0" and "false".
    bool flag(std::string_view name);
    /// One of the words.
    std::optional<std::string> word(std::string_view name, std::initializer_list<std::string_view> words);

    /// To be called last: reports what is left over.
    void finish();

private:
    const QueryItem* take(std::string_view name);

    const std::vector<QueryItem>& items_;
    Problems& problems_;
    std::vector<std::string_view> asked_;
};

} // namespace zentavo::devserver
