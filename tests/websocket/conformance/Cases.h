#pragma once

#include <string>
#include <vector>

#include "tests/websocket/conformance/RawFrames.h"

namespace zentavo::websocket::conformance {

/// What an echoing endpoint is sent, and what it must answer: to the letter, save the reason of a close frame.
struct Case {
    std::string name; ///< "group/case"
    std::vector<RawFrame> sent;
    std::vector<RawFrame> answered;
};

/// The largest message that the endpoints under test take, in bytes.
inline constexpr std::size_t messageLimit = 100000;

std::vector<Case> allCases();

} // namespace zentavo::websocket::conformance
