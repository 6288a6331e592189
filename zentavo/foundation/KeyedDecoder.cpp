#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {
namespace {

const Map& emptyMap() {
    static const Map& instance = *new Map;
    return instance;
}

// What the reads call a kind in messages, in the words of `Value::kindName`.
constexpr std::string_view textKind = "text";
constexpr std::string_view integerKind = "an integer";
constexpr std::string_view numberKind = "a number";
constexpr std::string_view booleanKind = "a boolean";
constexpr std::string_view mapKind = "a map";
constexpr std::string_view listKind = "a list";

template <class T>
std::optional<T> copied(const T* content) {
    return content != nullptr ? std::optional<T>(*content) : std::nullopt;
}

std::optional<std::string> textOf(const Value& value) { return copied(value.asString()); }
std::optional<std::int64_t> integerOf(const Value& value) { return value.exactInt64(); }
std::optional<double> numberOf(const Value& value) { return value.number(); }
std::optional<bool> booleanOf(const Value& value) { return copied(value.asBool()); }
std::optional<Map> mapOf(const Value& value) { return copied(value.asMap()); }
std::optional<List> listOf(const Value& value) { return copied(value.asList()); }

} // namespace

template <class T>
std::optional<T> KeyedDecoder::convert(std::string_view key, const Value* member, std::string_view expected,
                                       std::optional<T> (*read)(const Value&)) {
    if (member == nullptr) {
        return std::nullopt;
    }
    std::optional<T> content = read(*member);
    if (!content) {
        mismatch(key, expected, *member);
    }
    return content;
}

std::string KeyedDecoder::string(std::string_view key) {
    return convert(key, required(key, textKind), textKind, textOf).value_or("");
}
std::int64_t KeyedDecoder::integer(std::string_view key) {
    return convert(key, required(key, integerKind), integerKind, integerOf).value_or(0);
}
double KeyedDecoder::number(std::string_view key) {
    return convert(key, required(key, numberKind), numberKind, numberOf).value_or(0.0);
}
bool KeyedDecoder::boolean(std::string_view key) {
    return convert(key, required(key, booleanKind), booleanKind, booleanOf).value_or(false);
}
Map KeyedDecoder::map(std::string_view key) {
    return convert(key, required(key, mapKind), mapKind, mapOf).value_or(Map());
}
List KeyedDecoder::list(std::string_view key) {
    return convert(key, required(key, listKind), listKind, listOf).value_or(List());
}
Value KeyedDecoder::value(std::string_view key) {
    const Value* member = required(key, "a value");
    return member != nullptr ? *member : Value();
}

std::optional<std::string> KeyedDecoder::optionalString(std::string_view key) {
    return convert(key, optional(key), textKind, textOf);
}
std::optional<std::int64_t> KeyedDecoder::optionalInteger(std::string_view key) {
    return convert(key, optional(key), integerKind, integerOf);
}
std::optional<double> KeyedDecoder::optionalNumber(std::string_view key) {
    return convert(key, optional(key), numberKind, numberOf);
}
std::optional<bool> KeyedDecoder::optionalBoolean(std::string_view key) {
    return convert(key, optional(key), booleanKind, booleanOf);
}
std::optional<Map> KeyedDecoder::optionalMap(std::string_view key) {
    return convert(key, optional(key), mapKind, mapOf);
}
std::optional<List> KeyedDecoder::optionalList(std::string_view key) {
    return convert(key, optional(key), listKind, listOf);
}
std::optional<Value> KeyedDecoder::optionalValue(std::string_view key) { return copied(optional(key)); }

bool KeyedDecoder::present(std::string_view key) const noexcept {
    const Value* member = map_->find(key);
    return member != nullptr && !member->isNull();
}

void KeyedDecoder::fail(std::string_view key, std::string_view reason) {
    if (!failed()) {
        root().failure_ = Error{path(key) + ": " + std::string(reason)};
    }
}

KeyedDecoder KeyedDecoder::enter(std::string_view key) {
    const Value* member = required(key, mapKind);
    if (member != nullptr && member->asMap() == nullptr) {
        mismatch(key, mapKind, *member);
        member = nullptr;
    }
    return KeyedDecoder(member != nullptr ? *member->asMap() : emptyMap(), *this, std::string(key));
}

KeyedDecoder KeyedDecoder::enter(std::string_view key, const Value& element, std::size_t position) {
    std::string step = std::string(key) + '[' + std::to_string(position) + ']';
    const Map* map = element.asMap();
    if (map == nullptr) {
        mismatch(step, mapKind, element);
    }
    return KeyedDecoder(map != nullptr ? *map : emptyMap(), *this, std::move(step));
}

const List* KeyedDecoder::elements(std::string_view key) {
    const Value* member = required(key, listKind);
    if (member != nullptr && member->asList() == nullptr) {
        mismatch(key, listKind, *member);
    }
    return member != nullptr ? member->asList() : nullptr;
}

const Value* KeyedDecoder::required(std::string_view key, std::string_view expected) {
    if (failed()) {
        return nullptr;
    }
    const Value* member = map_->find(key);
    if (member == nullptr) {
        fail(key, "expected " + std::string(expected) + ", found nothing");
    }
    return member;
}

const Value* KeyedDecoder::optional(std::string_view key) const noexcept {
    return !failed() && present(key) ? map_->find(key) : nullptr;
}

void KeyedDecoder::mismatch(std::string_view key, std::string_view expected, const Value& found) {
    fail(key, "expected " + std::string(expected) + ", found " + found.kindName());
}

std::string KeyedDecoder::path(std::string_view key) const {
    std::string text(key);
    for (const KeyedDecoder* decoder = this; decoder->parent_ != nullptr; decoder = decoder->parent_) {
        text.insert(0, decoder->step_ + '.');
    }
    return text;
}

} // namespace zentavo
