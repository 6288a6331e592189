#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/Value.h"

namespace zentavo {

/// Writes JSON text piece by piece, without a tree of values in between; `json::write` is built on it.
/// Commas are placed by the writer; begin and end calls, and keys inside maps, must be paired by the caller.
/// The first thing that JSON cannot say (non-finite number, invalid UTF-8, too deep) is remembered, the text is then
/// worthless, and `finish` returns the error with the path to the place ("items[0].price").
///
/// Doubles are written in the shortest form that reads back as the same double; one without a fraction keeps a ".0"
/// (12.0, not 12), so that it reads back as a double too.
class ZENTAVO_EXPORT JSONWriter {
public:
    JSONWriter() = default;
    /// Writes into the room that `buffer` has; what stands in it is dropped.
    explicit JSONWriter(std::string buffer) noexcept : out_(std::move(buffer)), at_(out_.data()), end_(at_) {}
    ~JSONWriter() = default;
    JSONWriter(const JSONWriter&) = delete;
    JSONWriter& operator=(const JSONWriter&) = delete;

    void beginMap() { begin('{'); }
    void endMap() { end('}'); }
    void beginList() { begin('['); }
    void endList() { end(']'); }
    /// The name of the member whose value follows.
    void key(std::string_view name);

    void value(const Value& value);
    void value(const Map& map);
    void value(const List& list);
    void value(std::string_view text);
    void value(const std::string& text) { value(std::string_view(text)); }
    void value(const char* text) { value(std::string_view(text)); }
    void value(std::int64_t number);
    void value(double number);
    void value(bool flag) { raw(flag ? "true" : "false"); }
    /// Other integers, as `Value` takes them.
    template <std::integral T>
        requires(!std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, std::int64_t>)
    void value(T number) { value(Value(number)); }
    void value(std::nullptr_t) { null(); }
    /// A pointer is never meant as a boolean.
    template <class T>
    void value(const T*) = delete;
    void null() { raw("null"); }
    /// A value that is JSON text already and is trusted to be valid.
    void raw(std::string_view jsonText);

    bool failed() const noexcept { return failed_; }
    /// The text, or why there is none. Ends the writer: nothing is written after it.
    Result<std::string> finish();

private:
    void begin(char bracket);
    void end(char bracket);
    bool appendQuoted(std::string_view text, char after);
    bool appendEscaped(std::string_view text);
    /// Appends the escaped form of a character that a JSON string cannot hold as it is.
    void appendEscape(char c);
    void separate();
    void fail(std::string_view reason);

    /// Where the next `bytes` bytes may be written.
    char* room(std::size_t bytes) {
        if (static_cast<std::size_t>(end_ - at_) < bytes) {
            grow(bytes);
        }
        return at_;
    }
    void grow(std::size_t bytes);
    void put(char c) {
        *room(1) = c;
        ++at_;
    }
    void put(std::string_view text);
    std::size_t length() const noexcept { return static_cast<std::size_t>(at_ - out_.data()); }

    std::string out_;        ///< longer than the text so far: appending to a string costs a call each time
    char* at_ = out_.data(); ///< the next byte of the text
    char* end_ = at_;        ///< behind the last byte of `out_` that may be written
    std::size_t depth_ = 0;
    bool needsComma_ = false;
    bool failed_ = false;
    Error error_;
};

} // namespace zentavo
