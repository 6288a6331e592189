#pragma once

#include <algorithm>
#include <string>

namespace zentavo {

/// Makes one line of `text`: control characters become spaces. A line break in a value that somebody else chose would
/// forge a second entry of a log.
inline void makeSingleLine(std::string& text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
}

} // namespace zentavo
