#include "zentavo/foundation/Printable.h"

#include <algorithm>

namespace zentavo {

namespace {

bool isInsideCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }
bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

} // namespace

std::string printable(std::string_view text, std::size_t longest) {
    std::string line(text.substr(0, longest));
    if (line.size() < text.size()) {
        for (std::size_t end = line.size(); end > 0 && isInsideCharacter(text[end]); --end) {
            line.pop_back();
        }
        line += " ...";
    }
    std::replace_if(line.begin(), line.end(), isControl, '?');
    return line;
}

} // namespace zentavo
