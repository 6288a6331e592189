#include "zentavo/foundation/JSON.h"

#include <algorithm>

#include <simdjson.h>

#include "zentavo/foundation/JSONWriter.h"

namespace zentavo::json {
namespace {

namespace dom = simdjson::dom;

/// The parser's buffers grow to some 14 times the longest text that it has seen and stay with the thread, so only
/// texts of everyday size go through the kept one.
constexpr std::size_t keptParserBytes = 64U << 10U;

/// What `Limits::maximumDepth` may be at most: values are built, compared and destroyed by recursion, and the parser
/// itself goes no deeper than 1023.
constexpr std::size_t deepestNesting = 1000;

/// Copies the parser's document into a `Value`, and what `taker` wants to there.
class TreeBuilder {
public:
    TreeBuilder(std::size_t maximumDepth, std::size_t maximumValues)
        : levelsLeft_(maximumDepth), valuesLeft_(maximumValues) {}

    /// False when the document is beyond a limit; `value` is then incomplete.
    bool build(dom::element element, Value& value) {
        if (!count()) {
            return false;
        }
        // The getters cannot fail here: each is asked for the kind that the element has.
        switch (element.type()) {
        case dom::element_type::ARRAY:
            return buildList(dom::array(element.get_array().value_unsafe()), value);
        case dom::element_type::OBJECT:
            return buildMap(element.get_object().value_unsafe(), value,
                            [this](std::string_view, dom::element member, Value& into) { return build(member, into); });
        case dom::element_type::STRING:
            value = element.get_string().value_unsafe();
            return true;
        case dom::element_type::INT64:
            value = element.get_int64().value_unsafe();
            return true;
        case dom::element_type::UINT64:
            value = element.get_uint64().value_unsafe();
            return true;
        case dom::element_type::DOUBLE:
            value = element.get_double().value_unsafe();
            return true;
        case dom::element_type::BOOL:
            value = element.get_bool().value_unsafe();
            return true;
        case dom::element_type::NULL_VALUE:
            value = nullptr;
            return true;
        }
        return false;
    }

    /// As `build`, with the lists two levels down for `taker`.
    bool buildAround(ListTaker& taker, dom::element root, Value& value) {
        if (!root.is_object()) {
            return build(root, value);
        }
        return count() && buildMap(root.get_object().value_unsafe(), value,
                                   [&](std::string_view outer, dom::element member, Value& into) {
                                       return buildAround(taker, outer, member, into);
                                   });
    }

    /// After false: whether it was the number of values, not their depth.
    bool hasTooMany() const { return hasTooMany_; }

private:
    bool count() {
        hasTooMany_ = valuesLeft_ == 0;
        valuesLeft_ -= hasTooMany_ ? 0 : 1;
        return !hasTooMany_;
    }

    /// One level down, to `size` values. The parser counts no further than 2^24 - 1, which serves as well.
    bool enter(std::size_t size) {
        hasTooMany_ = levelsLeft_ != 0 && size > valuesLeft_; // found out before room is made for them
        if (levelsLeft_ == 0 || hasTooMany_) {
            return false;
        }
        --levelsLeft_;
        return true;
    }

    bool buildList(dom::array array, Value& value) {
        if (!enter(array.size())) {
            return false;
        }
        List list;
        list.reserve(array.size());
        for (const dom::element element : array) {
            if (!build(element, list.emplace_back())) {
                return false;
            }
        }
        value = std::move(list);
        ++levelsLeft_;
        return true;
    }

    bool buildAround(ListTaker& taker, std::string_view outer, dom::element element, Value& value) {
        if (!element.is_object()) {
            return build(element, value);
        }
        return count() && buildMap(element.get_object().value_unsafe(), value,
                                   [&](std::string_view inner, dom::element member, Value& into) {
                                       if (!member.is_array()) {
                                           return build(member, into);
                                       }
                                       into = List();
                                       return count() &&
                                              handOver(member.get_array().value_unsafe(), taker, outer, inner);
                                   });
    }

    bool handOver(dom::array array, ListTaker& taker, std::string_view outer, std::string_view inner) {
        if (!enter(array.size())) {
            return false;
        }
        taker.begin(outer, inner, array.size());
        for (const dom::element element : array) {
            Value value;
            if (!build(element, value)) {
                return false;
            }
            taker.take(std::move(value));
        }
        ++levelsLeft_;
        return true;
    }

    template <class BuildMember>
    bool buildMap(dom::object object, Value& value, BuildMember buildMember) {
        if (!enter(object.size())) {
            return false;
        }
        Map map;
        map.reserve(object.size());
        for (const dom::key_value_pair member : object) {
            if (!buildMember(member.key, member.value, map.set(std::string(member.key), nullptr))) {
                return false;
            }
        }
        value = std::move(map);
        ++levelsLeft_;
        return true;
    }

    std::size_t levelsLeft_;
    std::size_t valuesLeft_;
    bool hasTooMany_ = false;
};

Result<Value> readWith(dom::parser& parser, std::string_view text, const Limits& limits, ListTaker* taker) {
    dom::element root;
    if (const auto code = parser.parse(text.data(), text.size()).get(root); code != simdjson::SUCCESS) {
        return Error{std::string("not JSON: ") + simdjson::error_message(code)};
    }
    const std::size_t depth = std::min(limits.maximumDepth, deepestNesting);
    Value value;
    TreeBuilder builder(depth, limits.maximumValues);
    if (taker != nullptr ? !builder.buildAround(*taker, root, value) : !builder.build(root, value)) {
        if (builder.hasTooMany()) {
            return Error{"JSON of more than " + std::to_string(limits.maximumValues) + " values"};
        }
        return Error{"JSON nested deeper than " + std::to_string(depth) + " levels"};
    }
    return value;
}

/// `taker` may be none.
Result<Value> readText(std::string_view text, const Limits& limits, ListTaker* taker) {
    if (text.size() > limits.maximumBytes) {
        return Error{"JSON of " + std::to_string(text.size()) + " bytes is longer than the limit of " +
                     std::to_string(limits.maximumBytes)};
    }
    if (text.empty()) {
        return Error{"not JSON: no text"}; // the parser takes no null pointer, which empty text may be
    }
    if (text.size() > keptParserBytes || taker != nullptr) { // a taker may read JSON itself
        dom::parser parser;
        return readWith(parser, text, limits, taker);
    }
    static thread_local dom::parser parser;
    return readWith(parser, text, limits, taker);
}

Result<Map> mapOf(Result<Value> value) {
    if (!value) {
        return value.error();
    }
    if (Map* map = value->asMap()) {
        return std::move(*map);
    }
    return Error{std::string("expected a JSON object, found ") + value->kindName()};
}

template <class Content>
Result<std::string> writeContent(const Content& content) {
    JSONWriter writer;
    writer.value(content);
    return writer.finish();
}

} // namespace

Result<Value> read(std::string_view text, const Limits& limits) { return readText(text, limits, nullptr); }

Result<Map> readMap(std::string_view text, const Limits& limits) { return mapOf(read(text, limits)); }

Result<Value> read(std::string_view text, ListTaker& taker, const Limits& limits) {
    return readText(text, limits, &taker);
}

Result<std::string> write(const Value& value) { return writeContent(value); }
Result<std::string> write(const Map& map) { return writeContent(map); }

std::optional<std::string> textIn(TextEncoding encoding, Result<std::string> written) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (!written || (encoding == TextEncoding::ascii && !std::all_of(written->begin(), written->end(), isAscii))) {
        return std::nullopt;
    }
    return *std::move(written);
}

} // namespace zentavo::json
