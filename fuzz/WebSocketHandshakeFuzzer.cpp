// The input as a client's request and as a server's answer, at once and cut; and as the extension header of both.

#include <algorithm>
#include <string>

#include "fuzz/Check.h"
#include "zentavo/websocket/ClientHandshake.h"
#include "zentavo/websocket/ServerHandshake.h"

using namespace zentavo::websocket;

namespace {

/// The key is then always that of sixteen zero bytes, which a corpus can know the answer to.
class Zeros final : public zentavo::platform::Random {
public:
    void fill(std::span<std::uint8_t> bytes) override { std::fill(bytes.begin(), bytes.end(), std::uint8_t{0}); }
};

template <class Handshake, class Step>
std::pair<Step, std::string> give(Handshake& handshake, std::string bytes, std::size_t stride, Step waiting) {
    Step step = waiting;
    std::size_t at = 0;
    while (at < bytes.size() && step == waiting) {
        std::span<char> input(bytes.data() + at, std::min(stride, bytes.size() - at));
        const std::size_t before = input.size();
        step = handshake.receive(input);
        check(input.size() < before, "a handshake takes something");
        at += before - input.size();
    }
    return {step, bytes.substr(at)};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(textOf(data, size));
    const std::size_t whole = std::max<std::size_t>(size, 1);

    ServerHandshake one{DeflateOptions{}};
    ServerHandshake other{DeflateOptions{}};
    const auto asked = give(one, bytes, whole, ServerHandshake::Step::needMore);
    check(asked == give(other, bytes, 3, ServerHandshake::Step::needMore), "a cut changes nothing for a server");
    if (asked.first == ServerHandshake::Step::request) {
        const auto& names = one.request().subprotocols;
        const std::string answer = one.accept(names.empty() ? "" : names.front(), {});
        check(answer.starts_with("HTTP/1.1 101 ") && answer.ends_with("\r\n\r\n"), "an answer is one");
        check(answer.find("\r\n\r\n") == answer.size() - 4, "and only one");
    } else if (asked.first == ServerHandshake::Step::refused) {
        check(one.answer().starts_with("HTTP/1.1 4"), "a refusal says why");
    }

    Zeros zeros;
    const ClientRequest request{"example.org", "/", {"chat"}, {}, DeflateOptions{}};
    auto first = ClientHandshake::make(request, zeros).value();
    auto second = ClientHandshake::make(request, zeros).value();
    check(give(first, bytes, whole, ClientHandshake::Step::needMore) ==
              give(second, bytes, 3, ClientHandshake::Step::needMore),
          "a cut changes nothing for a client");

    if (const auto answer = answerDeflateOffer(bytes, DeflateOptions{}); answer && *answer) {
        const auto agreed = acceptDeflateAnswer((*answer)->header, DeflateOptions{});
        check(agreed.ok() && agreed->has_value(), "a client accepts what a server of ours answers");
        check((*agreed)->server.windowBits == (*answer)->agreement.server.windowBits, "and understands it alike");
    }
    static_cast<void>(acceptDeflateAnswer(bytes, DeflateOptions{}));
    return 0;
}
