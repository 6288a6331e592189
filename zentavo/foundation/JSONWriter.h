#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/Value.h"

namespace zentavo {

/// Writes JSON text straight into a string, without a tree of values in between; `json::write` is built on it.
/// Commas are placed by the writer; begin and end calls, and keys inside maps, must be paired by the caller.
/// The first thing that JSON cannot say (non-finite number, invalid UTF-8, too deep) is remembered, the text is then
/// worthless, and `finish` returns the error with the path to the place ("items[0].price").
///
/// Doubles are written in the shortest form that reads back as the same double; one without a fraction keeps a ".0"
/// (12.0, not 12), so that it reads back as a double too.
class ZENTAVO_EXPORT JSONWriter {
public:
    /// Appends to `out`, which must outlive the writer and is changed by nobody else meanwhile.
    explicit JSONWriter(std::string& out) noexcept : out_(out), start_(out.size()) {}

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
    Result<void> finish() const;

private:
    void begin(char bracket);
    void end(char bracket);
    bool appendQuoted(std::string_view text, char after);
    bool appendEscaped(std::string_view text);
    void separate();
    void fail(std::string_view reason);

    std::string& out_;
    /// Where this writer's text begins in `out_`.
    const std::size_t start_;
    std::size_t depth_ = 0;
    bool needsComma_ = false;
    bool failed_ = false;
    Error error_;
};

} // namespace zentavo
