#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zentavo::tools {

/// What the SDK would make of a push, in sentences for people.
struct PushReport {
    std::vector<std::string> failures; ///< for which the push, or all that the SDK does with it, is given up
    std::vector<std::string> warnings; ///< what is probably not meant, and has less effect than it seems
    std::vector<std::string> facts;    ///< what happens: on arrival, on screen, on a click; none where it fails
};

/// Judges the user info of a push, JSON text with a map "aps", with the SDK's own decoder.
PushReport lintPush(std::string_view text);

} // namespace zentavo::tools
