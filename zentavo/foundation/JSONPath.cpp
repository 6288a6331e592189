#include "zentavo/foundation/JSONPath.h"

#include <vector>

namespace zentavo::detail {
namespace {

struct Level {
    bool isList = false;
    std::size_t position = 0;
    /// The member's name, as it is written; empty between members.
    std::string_view name;
};

/// The end of the string whose opening quote is at `begin`: the position of its closing quote.
std::size_t closingQuote(std::string_view text, std::size_t begin) {
    std::size_t i = begin + 1;
    while (i < text.size() && text[i] != '"') {
        i += text[i] == '\\' ? 2 : 1;
    }
    return i;
}

} // namespace

std::string pathAtEnd(std::string_view written) {
    std::vector<Level> levels;
    std::string_view lastString;
    for (std::size_t i = 0; i < written.size(); ++i) {
        switch (written[i]) {
        case '"': {
            const std::size_t end = closingQuote(written, i);
            lastString = written.substr(i + 1, end - i - 1);
            i = end;
            break;
        }
        case '{':
        case '[':
            levels.push_back({written[i] == '[', 0, {}});
            break;
        case '}':
        case ']':
            levels.pop_back();
            break;
        case ':':
            levels.back().name = lastString;
            break;
        case ',':
            ++levels.back().position;
            levels.back().name = {};
            break;
        default:
            break;
        }
    }

    std::string path;
    for (const Level& level : levels) {
        if (level.isList) {
            path += '[' + std::to_string(level.position) + ']';
        } else if (!level.name.empty()) {
            path += path.empty() ? "" : ".";
            path += level.name;
        }
    }
    return path;
}

} // namespace zentavo::detail
