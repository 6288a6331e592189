#include "zentavo/inbox/DecodingDiagnostic.h"

#include <algorithm>

namespace zentavo {

namespace {

constexpr std::size_t longestText = 400; // bytes

bool isInsideCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }
bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

} // namespace

std::string printable(std::string_view text) {
    std::string line(text.substr(0, longestText));
    if (line.size() < text.size()) {
        // Never in the middle of a character.
        for (std::size_t end = line.size(); end > 0 && isInsideCharacter(text[end]); --end) {
            line.pop_back();
        }
        line += " ...";
    }
    std::replace_if(line.begin(), line.end(), isControl, '?');
    return line;
}

std::string diagnostic(const DecodingFailure& failure) {
    const std::string description = printable(failure.message);
    const std::string subject = "'" + printable(failure.subject) + "'";
    const std::string path = "\ncodingPath: " + printable(failure.codingPath);
    switch (failure.kind) {
    case DecodingFailure::Kind::typeMismatch:
        return "Type " + subject + " mismatch: " + description + path;
    case DecodingFailure::Kind::keyNotFound:
        return "Key " + subject + " not found: " + description + path;
    case DecodingFailure::Kind::valueNotFound:
        return "Value " + subject + " not found: " + description + path;
    case DecodingFailure::Kind::dataCorrupted:
        break;
    }
    return description;
}

} // namespace zentavo
