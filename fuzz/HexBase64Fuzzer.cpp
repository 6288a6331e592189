// The input once as bytes to encode and once as text to decode. Text that decodes is the text that encoding gives: no
// second spelling is accepted.

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/Check.h"
#include "zentavo/foundation/Base64.h"
#include "zentavo/foundation/Hex.h"

namespace hex = zentavo::hex;
namespace base64 = zentavo::base64;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::uint8_t> bytes(data, data + size);
    check(hex::decode(hex::encode(bytes)) == bytes, "hex comes back");
    check(base64::decode(base64::encode(bytes)) == bytes, "base64 comes back");
    check(base64::decodeURL(base64::encodeURL(bytes)) == bytes, "URL-safe base64 comes back");

    const std::string text(textOf(data, size));
    if (const auto decoded = hex::decode(text)) {
        std::string lower = text;
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c; });
        check(hex::encode(*decoded) == lower, "one hex spelling");
    }
    const auto strict = base64::decode(text);
    const auto lenient = base64::decode(text, base64::Unknown::ignore);
    if (strict) {
        check(base64::encode(*strict) == text, "one base64 spelling");
        check(lenient == strict, "what is accepted strictly is accepted leniently");
    }
    if (lenient) {
        std::string wrapped = base64::encode(*lenient);
        wrapped.insert(wrapped.size() / 2, "\r\n");
        check(base64::decode(wrapped, base64::Unknown::ignore) == lenient, "line breaks are passed over");
    }
    if (const auto decoded = base64::decodeURL(text)) {
        check(base64::encodeURL(*decoded) == text.substr(0, text.find('=')), "one URL-safe spelling, padding aside");
    }
    return 0;
}
