// A line of letters, each a read with a name after it, then the JSON object to read from: "sa Ib {c re }" reads the text
// "a", perhaps an integer "b", enters the map "c", reads a list of maps "e" and leaves again. Capitals are the optional reads.

#include <string>

#include "fuzz/Check.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/KeyedDecoder.h"

namespace {

using zentavo::KeyedDecoder;

/// What is left of the program.
std::string_view rest;

template <class Content>
void checkRead(KeyedDecoder& decoder, const Content* there, const Content& read) {
    check(decoder.failed() || (there != nullptr && *there == read), "without a failure, what was there was read");
}

void run(KeyedDecoder& decoder, int depth);

/// One read of the program.
void step(KeyedDecoder& decoder, char letter, std::string_view key, int depth) {
    const zentavo::Value* member = decoder.source().find(key);
    const zentavo::Value there = member != nullptr ? *member : zentavo::Value();
    const auto inner = [&](KeyedDecoder& child) {
        run(child, depth + 1);
        return 0;
    };
    switch (letter) {
    case 's':
        return checkRead(decoder, there.asString(), decoder.string(key));
    case 'b':
        return checkRead(decoder, there.asBool(), decoder.boolean(key));
    case 'm':
        return checkRead(decoder, there.asMap(), decoder.map(key));
    case 'l':
        return checkRead(decoder, there.asList(), decoder.list(key));
    case 't': {
        const auto read = decoder.stringList(key);
        const zentavo::List* list = there.asList();
        return check(decoder.failed() || (list != nullptr && list->size() == read.size()),
                     "all texts of a list are read");
    }
    case 'i': {
        const auto read = decoder.integer(key);
        return check(decoder.failed() || there.exactInt64() == read, "integers are exact");
    }
    case 'n': {
        const auto read = decoder.number(key);
        return check(decoder.failed() || there.number() == read, "numbers are numbers");
    }
    case 'S': {
        const auto read = decoder.optionalString(key);
        return check(decoder.failed() || read.has_value() == decoder.present(key), "present text is read");
    }
    case 'I': {
        const auto read = decoder.optionalInteger(key);
        return check(decoder.failed() || read == there.exactInt64(), "a present integer is read");
    }
    case 'V': {
        const auto read = decoder.optionalValue(key);
        return check(decoder.failed() || read.has_value() == decoder.present(key), "a present value is read");
    }
    case '{':
        decoder.nested(key, inner);
        return;
    case '(':
        decoder.optionalNested(key, inner);
        return;
    case 'r':
        decoder.nestedList(key, inner);
        return;
    case '!':
        decoder.fail(key, "as the program says");
        return check(decoder.failed(), "a failure of the caller's own counts");
    default:
        return;
    }
}

void run(KeyedDecoder& decoder, int depth) {
    while (!rest.empty() && depth < 8) {
        const char letter = rest[0];
        rest.remove_prefix(1);
        if (letter == '}') {
            return;
        }
        if (letter == ' ' || rest.empty()) {
            continue;
        }
        const std::string_view key = rest.substr(0, 1);
        rest.remove_prefix(1);

        const auto before = decoder.failure();
        step(decoder, letter, key, depth);
        check(!before || decoder.failure() == before, "the first failure stays");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = textOf(data, size);
    const std::size_t line = text.find('\n');
    if (line == std::string_view::npos) {
        return 0;
    }
    const auto map = zentavo::json::readMap(text.substr(line + 1));
    if (!map) {
        return 0;
    }
    rest = text.substr(0, line);
    KeyedDecoder decoder(*map);
    run(decoder, 0);
    check(decoder.failed() == decoder.failure().has_value(), "failed and failure agree");
    check(!decoder.failed() || decoder.failure()->message.find(": ") != std::string::npos, "a failure has a path");
    return 0;
}
