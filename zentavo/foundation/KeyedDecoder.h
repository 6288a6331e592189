#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/DecodingFailure.h"
#include "zentavo/foundation/Value.h"

namespace zentavo {

/// Reads typed fields out of a JSON object, strictly and in the order in which they are asked for. The first field that
/// is missing or of the wrong kind is remembered with its path ("data.options.right: expected text, found a number");
/// later reads then yield defaults, so a record's decode function can read all its fields in a row and ask once:
///
///     DeliveryResponse r;
///     r.count = decoder.integer("count");
///     r.title = decoder.optionalString("title");
///     if (auto failure = decoder.failure()) return *failure;
///
/// Optional reads accept an absent member and null; a present member of the wrong kind fails them as well.
/// The decoder refers to the map that it was made with, and a nested decoder to its parent and to the key under which it
/// was entered: keep them alive.
class ZENTAVO_EXPORT KeyedDecoder {
public:
    explicit KeyedDecoder(const Map& map) noexcept : map_(&map) {}

    std::string string(std::string_view key);
    std::int64_t integer(std::string_view key);
    double number(std::string_view key);
    bool boolean(std::string_view key);
    /// A copy of the member as it is.
    Value value(std::string_view key);
    Map map(std::string_view key);
    List list(std::string_view key);
    std::vector<std::string> stringList(std::string_view key);

    std::optional<std::string> optionalString(std::string_view key);
    std::optional<std::int64_t> optionalInteger(std::string_view key);
    std::optional<double> optionalNumber(std::string_view key);
    std::optional<bool> optionalBoolean(std::string_view key);
    std::optional<Value> optionalValue(std::string_view key);
    std::optional<Map> optionalMap(std::string_view key);
    std::optional<List> optionalList(std::string_view key);

    /// `decode(KeyedDecoder&)` is called with the object under `key` and returns the record.
    template <class Decode>
    auto nested(std::string_view key, Decode decode) -> decltype(decode(std::declval<KeyedDecoder&>())) {
        KeyedDecoder child = enter(key);
        return decode(child);
    }
    /// As `nested`, for a member that may be absent or null.
    template <class Decode>
    auto optionalNested(std::string_view key, Decode decode)
        -> std::optional<decltype(decode(std::declval<KeyedDecoder&>()))> {
        if (!present(key)) {
            return std::nullopt;
        }
        KeyedDecoder child = enter(key);
        return decode(child);
    }
    /// The objects of the list under `key`, each through `decode`.
    template <class Decode>
    auto nestedList(std::string_view key, Decode decode)
        -> std::vector<decltype(decode(std::declval<KeyedDecoder&>()))> {
        std::vector<decltype(decode(std::declval<KeyedDecoder&>()))> records;
        if (const List* items = elements(key)) {
            records.reserve(items->size());
            for (std::size_t i = 0; i < items->size() && !failed(); ++i) {
                KeyedDecoder child = enter(key, (*items)[i], i);
                records.push_back(decode(child));
            }
        }
        return records;
    }

    /// `decode` for `element`, which is the one at `position` of the list under `key`, but is kept elsewhere.
    template <class Decode>
    auto nestedElement(std::string_view key, std::size_t position, const Value& element, Decode decode)
        -> decltype(decode(std::declval<KeyedDecoder&>())) {
        KeyedDecoder child = enter(key, element, position);
        return decode(child);
    }

    /// True when the member is there and not null.
    bool present(std::string_view key) const noexcept;
    /// The map being read.
    const Map& source() const noexcept { return *map_; }

    bool failed() const noexcept { return root().failure_.has_value(); }
    /// The first failure of this decoder and all nested ones.
    const std::optional<DecodingFailure>& failure() const { return root().failure_; }
    /// Marks the record as bad for a reason of the caller's own; the first failure stays.
    void fail(std::string_view key, std::string_view reason);
    /// As `fail`, where what is `found` under `key` is of the wrong kind; `expected` is a noun with its article.
    void mismatch(std::string_view key, std::string_view expected, const Value& found) {
        mismatch(key, expected, found, notInList);
    }

    /// As if what `other` has read, a part of this record that was kept elsewhere, had been read here: its failure, where
    /// this has none yet, and its remarks. Its paths are taken as they are.
    void adopt(const KeyedDecoder& other);

    /// Notes something odd about `key` that is no failure. The first `maximumRemarks` are kept, with their paths.
    void remark(std::string_view key, std::string_view text);
    const std::vector<std::string>& remarks() const noexcept { return root().remarks_; }
    static constexpr std::size_t maximumRemarks = 20;

private:
    static constexpr std::size_t notInList = static_cast<std::size_t>(-1);

    KeyedDecoder(const Map& map, KeyedDecoder& parent, std::string_view key, std::size_t position) noexcept
        : map_(&map), parent_(&parent), key_(key), position_(position) {}

    KeyedDecoder enter(std::string_view key);
    KeyedDecoder enter(std::string_view key, const Value& element, std::size_t position);
    const List* elements(std::string_view key);
    /// The member under `key`; null after a failure, and where it is missing, which is one. `expected` is a noun.
    const Value* required(std::string_view key, std::string_view expected);
    /// As `required`, but a member that is absent or null is no failure.
    const Value* optional(std::string_view key) const noexcept;
    template <class T>
    std::optional<T> convert(std::string_view key, const Value* member, std::string_view expected,
                             std::optional<T> (*read)(const Value&));
    void mismatch(std::string_view key, std::string_view expected, const Value& found, std::size_t position);
    void fail(DecodingFailure::Kind kind, std::string_view subject, std::string path, std::string_view reason);
    const KeyedDecoder& root() const noexcept { return parent_ != nullptr ? parent_->root() : *this; }
    KeyedDecoder& root() noexcept { return parent_ != nullptr ? parent_->root() : *this; }
    std::string path(std::string_view key, std::size_t position = notInList) const;

    const Map* map_;
    KeyedDecoder* parent_ = nullptr;
    /// How this decoder was reached from its parent: a member, perhaps one of the list there. The path is put together
    /// only when a failure needs it.
    std::string_view key_;
    std::size_t position_ = notInList;
    std::optional<DecodingFailure> failure_;
    std::vector<std::string> remarks_;
};

} // namespace zentavo
