#include "zentavo/websocket/HTTPHead.h"

#include <algorithm>

#include "zentavo/websocket/HeaderGrammar.h"

namespace zentavo::websocket {

std::size_t HTTPHead::count(std::string_view name) const {
    return static_cast<std::size_t>(std::count_if(fields.begin(), fields.end(), [&](const auto& field) {
        return grammar::equalsIgnoringCase(field.first, name);
    }));
}

std::string HTTPHead::list(std::string_view name) const {
    std::string values;
    for (const auto& [field, value] : fields) {
        if (grammar::equalsIgnoringCase(field, name)) {
            values += values.empty() ? value : ", " + value;
        }
    }
    return values;
}

HTTPHeadReader::Step HTTPHeadReader::take(std::span<char>& input) {
    constexpr std::string_view end = "\r\n\r\n";
    // The end may be cut: what was there before takes part in the search.
    const std::size_t from = text_.size() - std::min<std::size_t>(text_.size(), end.size() - 1);
    const std::size_t before = text_.size();
    const std::size_t copied = std::min(input.size(), maximumSize - before);
    text_.append(input.data(), copied);
    const std::size_t found = text_.find(end, from);
    if (found == std::string::npos) {
        input = input.subspan(copied);
        return text_.size() == maximumSize ? Step::tooLarge : Step::needMore;
    }
    text_.resize(found + 2);
    input = input.subspan(found + end.size() - before);
    return parse();
}

HTTPHeadReader::Step HTTPHeadReader::parse() {
    std::string_view rest = text_;
    bool first = true;
    while (!rest.empty()) {
        const std::size_t end = rest.find("\r\n");
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end + 2);
        if (first) {
            head_.startLine = line;
            first = false;
            if (line.empty() || !grammar::isFieldValue(line)) {
                return Step::malformed;
            }
        } else if (head_.fields.size() == maximumFields) {
            return Step::tooLarge;
        } else if (!parseField(line)) {
            return Step::malformed;
        }
    }
    return Step::done;
}

bool HTTPHeadReader::parseField(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return false;
    }
    const std::string_view name = line.substr(0, colon);
    const std::string_view value = grammar::trim(line.substr(colon + 1));
    if (!grammar::isToken(name) || !grammar::isFieldValue(value)) {
        return false;
    }
    head_.fields.emplace_back(name, value);
    return true;
}

} // namespace zentavo::websocket
