#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace zentavo::devserver {

/// Whatever arrives over the network, as valid UTF-8: each byte that is none becomes U+FFFD.
std::string utf8Text(std::string_view bytes);
bool isUTF8(std::string_view bytes) noexcept;

/// For one line on a terminal: control characters become "?", so that no request can steer the terminal. `bytes` is UTF-8.
std::string oneLine(std::string_view bytes);

/// A name from outside for use in a message: in quotes, cut to a readable length.
std::string inQuotes(std::string_view name);

/// "2026-11-05T09:03:07.123Z".
std::string utcTimestamp(std::chrono::system_clock::time_point time);

} // namespace zentavo::devserver
