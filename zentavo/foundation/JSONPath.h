#pragma once

#include <string>
#include <string_view>

namespace zentavo::detail {

/// Where the value that would follow `written` stands: "items[0].price", empty at the top. `written` is the start of a
/// well-formed JSON text, cut off where a value or a member's name begins, or inside it when it is a string. Not
/// installed.
std::string pathAtEnd(std::string_view written);

} // namespace zentavo::detail
