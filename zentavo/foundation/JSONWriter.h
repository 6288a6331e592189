#pragma once

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
class ZENTAVO_EXPORT JSONWriter {
public:
    /// Appends to `out`, which must outlive the writer.
    explicit JSONWriter(std::string& out) noexcept : out_(out) {}

    void beginMap();
    void endMap();
    void beginList();
    void endList();
    /// The name of the member whose value follows.
    void key(std::string_view name);

    void value(const Value& value);
    void value(const Map& map);
    void value(const List& list);
    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(std::int64_t number);
    void value(double number);
    void value(bool flag);
    void null();
    /// A value that is JSON text already and is trusted to be valid.
    void raw(std::string_view jsonText);

    bool failed() const noexcept { return failed_; }
    Result<void> finish() const;

private:
    void separate();
    bool enter();
    void leave() noexcept;
    void fail(std::string_view reason);

    std::string& out_;
    std::size_t depth_ = 0;
    bool needsComma_ = false;
    bool failed_ = false;
    Error error_;
};

} // namespace zentavo
