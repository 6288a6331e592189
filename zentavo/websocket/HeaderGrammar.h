#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The pieces of header grammar that handshakes need (RFC 9110).
namespace zentavo::websocket::grammar {

bool isTokenCharacter(char c) noexcept;
bool isToken(std::string_view text) noexcept;
/// Visible characters, blanks and tabs, and bytes beyond ASCII: nothing that could end a header line.
bool isFieldValue(std::string_view text) noexcept;
/// What another end wrote, for people to read: UTF-8 of at most 200 bytes without control characters.
std::string readable(std::string_view text);
bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept;
std::string_view trim(std::string_view text) noexcept;
/// The elements of a comma-separated list without its empty ones.
std::vector<std::string_view> splitList(std::string_view text);
/// Whether the list has `token`, in any case of letters.
bool listHas(std::string_view list, std::string_view token);

struct Parameter {
    std::string_view name;
    std::optional<std::string> value;
};
struct Extension {
    std::string_view name;
    std::vector<Parameter> parameters;
};
/// The value of an extension header, whose views point into it. None for one that breaks the grammar or has more than
/// 64 extensions and parameters.
std::optional<std::vector<Extension>> parseExtensions(std::string_view text);

} // namespace zentavo::websocket::grammar
