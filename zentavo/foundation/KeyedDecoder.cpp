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

/// The kind without its article, as a failure names it.
std::string_view typeName(std::string_view kind) { return kind.substr(kind.find(' ') + 1); }

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
std::vector<std::string> KeyedDecoder::stringList(std::string_view key) {
    std::vector<std::string> texts;
    if (const List* items = elements(key)) {
        texts.reserve(items->size());
        for (std::size_t i = 0; i < items->size() && !failed(); ++i) {
            const Value& item = (*items)[i];
            if (const std::string* text = item.asString()) {
                texts.push_back(*text);
            } else {
                mismatch(key, textKind, item, i);
            }
        }
    }
    return texts;
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
    fail(DecodingFailure::Kind::dataCorrupted, {}, path(key), reason);
}

void KeyedDecoder::fail(DecodingFailure::Kind kind, std::string_view subject, std::string path,
                        std::string_view reason) {
    if (failed()) {
        return;
    }
    DecodingFailure& failure = root().failure_.emplace();
    failure.message = path + ": " + std::string(reason);
    failure.kind = kind;
    failure.subject = subject;
    failure.codingPath = std::move(path);
}

void KeyedDecoder::adopt(const KeyedDecoder& other) {
    KeyedDecoder& whole = root();
    if (!whole.failure_) {
        whole.failure_ = other.failure();
    }
    for (const std::string& line : other.remarks()) {
        if (whole.remarks_.size() < maximumRemarks) {
            whole.remarks_.push_back(line);
        }
    }
}

void KeyedDecoder::remark(std::string_view key, std::string_view text) {
    if (std::vector<std::string>& remarks = root().remarks_; remarks.size() < maximumRemarks) {
        remarks.push_back(path(key) + ": " + std::string(text));
    }
}

KeyedDecoder KeyedDecoder::enter(std::string_view key) {
    const Value* member = required(key, mapKind);
    if (member != nullptr && member->asMap() == nullptr) {
        mismatch(key, mapKind, *member);
        member = nullptr;
    }
    return KeyedDecoder(member != nullptr ? *member->asMap() : emptyMap(), *this, key, notInList);
}

KeyedDecoder KeyedDecoder::enter(std::string_view key, const Value& element, std::size_t position) {
    const Map* map = element.asMap();
    if (map == nullptr) {
        mismatch(key, mapKind, element, position);
    }
    return KeyedDecoder(map != nullptr ? *map : emptyMap(), *this, key, position);
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
        fail(DecodingFailure::Kind::keyNotFound, key, path(key),
             "expected " + std::string(expected) + ", found nothing");
    }
    return member;
}

const Value* KeyedDecoder::optional(std::string_view key) const noexcept {
    return !failed() && present(key) ? map_->find(key) : nullptr;
}

void KeyedDecoder::mismatch(std::string_view key, std::string_view expected, const Value& found, std::size_t position) {
    const auto kind = found.isNull() ? DecodingFailure::Kind::valueNotFound : DecodingFailure::Kind::typeMismatch;
    fail(kind, typeName(expected), path(key, position),
         "expected " + std::string(expected) + ", found " + found.kindName());
}

std::string KeyedDecoder::path(std::string_view key, std::size_t position) const {
    std::string text(key);
    if (position != notInList) {
        text += '[' + std::to_string(position) + ']';
    }
    return parent_ != nullptr ? parent_->path(key_, position_) + '.' + text : text;
}

} // namespace zentavo
