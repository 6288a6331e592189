#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "zentavo/foundation/Export.h"

namespace zentavo {

class Value;

/// A JSON array.
using List = std::vector<Value>;

/// A JSON object that keeps its members in the order in which they were first set. Keys are unique. Looking a key up
/// takes constant time on average, also in large maps. A plain value: copying copies everything, and one object is not
/// to be changed by one thread while another reads it.
class ZENTAVO_EXPORT Map {
public:
    struct Entry;
    using const_iterator = std::vector<Entry>::const_iterator;

    Map();
    /// Of two entries with one key the later gives the value, the earlier the place.
    Map(std::initializer_list<Entry> entries);
    Map(const Map&);
    Map(Map&&) noexcept;
    Map& operator=(const Map&);
    Map& operator=(Map&&) noexcept;
    ~Map();

    bool empty() const noexcept;
    std::size_t size() const noexcept;
    const_iterator begin() const noexcept;
    const_iterator end() const noexcept;

    /// The value under `key`, or null. The pointer holds until the map is changed.
    const Value* find(std::string_view key) const noexcept;
    Value* find(std::string_view key) noexcept;
    bool contains(std::string_view key) const noexcept { return find(key) != nullptr; }

    /// Sets `key` to `value`; a key that is there keeps its place. Returns the stored value.
    Value& set(std::string key, Value value);
    /// True when something was removed.
    bool remove(std::string_view key);
    /// Sets every entry of `other` here; on a common key `other` wins.
    void merge(const Map& other);
    void reserve(std::size_t count);

    /// Equal when both hold the same keys with equal values; order does not count.
    friend ZENTAVO_EXPORT bool operator==(const Map& a, const Map& b) noexcept;

private:
    std::size_t slotOf(std::string_view key) const noexcept;
    void rebuildIndex();

    std::vector<Entry> entries_;
    /// Open-addressing hash table of positions in `entries_`, kept only for maps beyond a handful of entries.
    std::vector<std::uint32_t> index_;
};

/// A JSON value. Integers and other numbers are kept apart, so that 64-bit ids travel exactly. May hold a non-finite
/// number or text that is not UTF-8; writing it as JSON then fails with an error.
class ZENTAVO_EXPORT Value {
public:
    Value() noexcept = default;
    Value(std::nullptr_t) noexcept {}
    Value(bool value) noexcept : data_(value) {}
    template <std::integral T>
        requires(!std::same_as<T, bool> && !std::same_as<T, char>)
    Value(T value)
    noexcept {
        if constexpr (std::unsigned_integral<T> && sizeof(T) == sizeof(std::int64_t)) {
            // Beyond the signed range the nearest double stands in, as it does for such a number read from JSON.
            if (value > static_cast<T>(std::numeric_limits<std::int64_t>::max())) {
                data_ = static_cast<double>(value);
                return;
            }
        }
        data_ = static_cast<std::int64_t>(value);
    }
    template <std::floating_point T>
    Value(T value) noexcept : data_(static_cast<double>(value)) {}
    Value(const char* text) : data_(std::string(text)) {}
    Value(std::string_view text) : data_(std::string(text)) {}
    Value(std::string text) noexcept : data_(std::move(text)) {}
    Value(List list) noexcept : data_(std::move(list)) {}
    Value(Map map) noexcept : data_(std::move(map)) {}
    /// A pointer is never meant as a boolean.
    template <class T>
    Value(const T*) = delete;

    bool isNull() const noexcept { return std::holds_alternative<std::nullptr_t>(data_); }
    bool isNumber() const noexcept { return asInteger() != nullptr || asDouble() != nullptr; }

    /// The content when it is of exactly this kind, else null; nothing is converted.
    const bool* asBool() const noexcept { return std::get_if<bool>(&data_); }
    const std::int64_t* asInteger() const noexcept { return std::get_if<std::int64_t>(&data_); }
    const double* asDouble() const noexcept { return std::get_if<double>(&data_); }
    const std::string* asString() const noexcept { return std::get_if<std::string>(&data_); }
    const List* asList() const noexcept { return std::get_if<List>(&data_); }
    const Map* asMap() const noexcept { return std::get_if<Map>(&data_); }
    std::string* asString() noexcept { return std::get_if<std::string>(&data_); }
    List* asList() noexcept { return std::get_if<List>(&data_); }
    Map* asMap() noexcept { return std::get_if<Map>(&data_); }

    /// The number as a signed 64-bit integer when it is one without loss: 12 and 12.0 are; 12.5, true, "12" and 2^63
    /// are not. Every typed decode of an integer goes through here.
    std::optional<std::int64_t> exactInt64() const noexcept;
    /// The number as a double; booleans and text are no numbers.
    std::optional<double> number() const noexcept;

    /// A noun for error messages: "null", "a boolean", "a number", "text", "a list", "a map".
    const char* kindName() const noexcept;

    /// Integers and doubles of the same value are equal: on the wire they are the same number.
    friend ZENTAVO_EXPORT bool operator==(const Value& a, const Value& b) noexcept;

private:
    std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, List, Map> data_;
};

struct Map::Entry {
    std::string key;
    Value value;
};

inline bool Map::empty() const noexcept { return entries_.empty(); }
inline std::size_t Map::size() const noexcept { return entries_.size(); }
inline Map::const_iterator Map::begin() const noexcept { return entries_.begin(); }
inline Map::const_iterator Map::end() const noexcept { return entries_.end(); }

} // namespace zentavo
