// The input once as compressed messages of a peer, once as messages to compress and to expand again.

#include <algorithm>
#include <string>

#include "fuzz/Check.h"
#include "zentavo/websocket/Deflate.h"

using namespace zentavo::websocket;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    constexpr std::size_t limit = 65536;
    const int bits = 8 + data[0] % 8;
    const bool takeover = (data[0] & 8U) != 0;
    const std::string_view input = textOf(data + 1, size - 1);

    Inflater hostile(bits, takeover);
    std::string out;
    std::string_view rest = input;
    std::size_t parts = 1; // and what belongs behind the last
    while (!rest.empty()) {
        const std::string_view part = rest.substr(0, 1U + data[0] / 16U);
        rest.remove_prefix(part.size());
        ++parts;
        const auto outcome = hostile.expand(part, rest.empty(), out, limit);
        check(outcome == Inflater::Outcome::tooLarge || out.size() <= limit, "the limit holds");
        check(out.size() <= limit + 1, "nothing is expanded beyond the limit");
        check(hostile.prepared() <= 1024 * parts + 4 * input.size() + out.size(), "work follows from what came");
        if (outcome != Inflater::Outcome::ok) {
            break;
        }
    }

    Deflater deflater(bits, takeover, 6);
    Inflater inflater(bits, takeover);
    for (const std::string_view message : {input, input.substr(input.size() / 2), input}) {
        if (message.empty()) {
            continue;
        }
        const std::string_view small = deflater.compress(message);
        std::string back;
        check(inflater.expand(small, true, back, message.size()) == Inflater::Outcome::ok, "what we compress expands");
        check(back == message, "to what it was");
    }
    return 0;
}
