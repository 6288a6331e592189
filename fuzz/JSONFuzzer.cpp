// What is read can be written, and reads back as the same value. And the input as one string: the writer takes it
// exactly when it is UTF-8.

#include <string>

#include "fuzz/Check.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/UTF8.h"

namespace json = zentavo::json;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = textOf(data, size);
    if (const auto value = json::read(text)) {
        const auto written = json::write(*value);
        check(written.ok(), "what was read can be written");
        const auto again = json::read(*written);
        check(again.ok(), "what was written can be read");
        check(*again == *value, "the value comes back");
        check(*json::write(*again) == *written, "the text comes back");
    } else {
        check(!value.error().message.empty(), "a refusal has a reason");
    }

    const zentavo::Value string(text);
    const auto quoted = json::write(string);
    check(quoted.ok() == zentavo::utf8::isValid(text), "text is written when it is UTF-8");
    if (quoted) {
        const auto again = json::read(*quoted);
        check(again.ok() && *again == string, "text comes back");
    }
    // As a name, which takes another way through the writer.
    check(json::write(zentavo::Map{{std::string(text), 1}}).ok() == quoted.ok(), "names are text");
    return 0;
}
