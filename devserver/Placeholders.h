#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace zentavo::devserver {

/// "{{server}}" and the like, with its braces, and what takes its place.
using Placeholder = std::pair<std::string_view, std::string>;

/// `text` with the placeholders filled in. Braces that are none stay.
std::string fillIn(std::string_view text, std::span<const Placeholder> values);

} // namespace zentavo::devserver
