#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/TextEncoding.h"
#include "zentavo/foundation/Value.h"

namespace zentavo {

/// JSON text (RFC 8259) to values and back. All functions may be called on any thread.
namespace json {

/// What is accepted from outside. Text beyond a limit is refused as an error, never cut.
struct Limits {
    std::size_t maximumBytes = 16U << 20U;
    /// Levels of lists and maps inside each other; the same default bound holds for writing. At most 1000.
    std::size_t maximumDepth = 256;
    /// Values in all, lists, maps and what is in them: a value takes some 30 times the bytes of its shortest text.
    std::size_t maximumValues = 1'000'000;
};

/// Reads one JSON value of any kind. Of members with one name the last wins. Refused: invalid UTF-8, numbers that no
/// double can hold (1e400), integers below -2^63 or beyond 2^64 - 1, anything after the value, and text beyond `limits`.
/// Integers within the signed 64-bit range stay integers, all other numbers become doubles.
ZENTAVO_EXPORT Result<Value> read(std::string_view text, const Limits& limits = {});

/// As `read`, for where only an object will do.
ZENTAVO_EXPORT Result<Map> readMap(std::string_view text, const Limits& limits = {});

/// Takes the lists in the members of an object's members, "entries" in {"data": {"entries": […]}} for one.
class ListTaker {
public:
    virtual ~ListTaker() = default;
    /// A list of `size` elements comes. Of two lists of one place the later counts.
    virtual void begin(std::string_view outer, std::string_view inner, std::size_t size) = 0;
    virtual void take(Value element) = 0;
};

/// As `read`, but such lists are empty in the value, and `taker` gets their elements one by one in the order of the text:
/// a long list of records never lies in memory as values all at once. Where a limit is exceeded, some may have been taken.
ZENTAVO_EXPORT Result<Value> read(std::string_view text, ListTaker& taker, const Limits& limits = {});

/// Writes compact JSON: no spaces, "/" not escaped, doubles in the shortest form that reads back the same, text as
/// UTF-8 with only what must be escaped escaped. Refused: non-finite numbers, invalid UTF-8, nesting beyond
/// `Limits::maximumDepth`.
ZENTAVO_EXPORT Result<std::string> write(const Value& value);
ZENTAVO_EXPORT Result<std::string> write(const Map& map);

/// Written text for those who want it as text or not at all: none where writing failed or `encoding` has not all of its
/// characters.
ZENTAVO_EXPORT std::optional<std::string> textIn(TextEncoding encoding, Result<std::string> written);

} // namespace json
} // namespace zentavo
