#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zentavo/foundation/Export.h"

namespace zentavo::websocket {

/// Header fields in their order; names compare in any case of letters.
using HeaderFields = std::vector<std::pair<std::string, std::string>>;

/// The head of an HTTP request or answer: everything up to the empty line.
struct ZENTAVO_EXPORT HTTPHead {
    std::string startLine;
    HeaderFields fields;

    std::size_t count(std::string_view name) const;
    /// The values of all fields of that name, as one list; empty when there is none.
    std::string list(std::string_view name) const;
};

/// Reads a head that arrives in parts, cut anywhere. Strict about line ends and blanks, where leniency has let requests
/// be smuggled past others.
class ZENTAVO_EXPORT HTTPHeadReader {
public:
    enum class Step { needMore, done, tooLarge, malformed };

    /// Bytes of a head, and fields in it.
    static constexpr std::size_t maximumSize = 16384;
    static constexpr std::size_t maximumFields = 100;

    /// Takes bytes from the front of `input` up to the end of the head and not one more.
    Step take(std::span<char>& input);

    const HTTPHead& head() const noexcept { return head_; }

private:
    Step parse();
    bool parseField(std::string_view line);

    std::string text_;
    HTTPHead head_;
};

} // namespace zentavo::websocket
