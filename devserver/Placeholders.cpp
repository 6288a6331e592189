#include "devserver/Placeholders.h"

#include <algorithm>

namespace zentavo::devserver {

std::string fillIn(std::string_view text, std::span<const Placeholder> values) {
    std::string result;
    result.reserve(text.size() + 256);
    while (!text.empty()) {
        const std::size_t at = text.find("{{");
        result += text.substr(0, at);
        if (at == std::string_view::npos) {
            break;
        }
        text.remove_prefix(at);
        const auto value = std::ranges::find_if(values, [&](const auto& each) { return text.starts_with(each.first); });
        // One brace is passed over, so that a placeholder right behind a brace is found.
        result += value != values.end() ? value->second : text.substr(0, 1);
        text.remove_prefix(value != values.end() ? value->first.size() : 1);
    }
    return result;
}

} // namespace zentavo::devserver
