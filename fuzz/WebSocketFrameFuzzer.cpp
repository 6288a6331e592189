// Bytes as they could come from the network, given to a session of either role, without and with compression, at once
// and cut. However the bytes are cut, the session says and hears the same.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/Check.h"
#include "zentavo/websocket/Session.h"

using namespace zentavo::websocket;

namespace {

class Zeros final : public zentavo::platform::Random {
public:
    void fill(std::span<std::uint8_t> bytes) override { std::fill(bytes.begin(), bytes.end(), std::uint8_t{0}); }
};

struct Heard final : SessionHandler {
    void onMessage(MessageKind kind, std::string_view content) override {
        check(content.size() <= limit, "a message keeps to the limit");
        messages.emplace_back(kind, content);
    }
    static constexpr std::size_t limit = 4096;
    std::vector<std::pair<MessageKind, std::string>> messages;
    std::string said;
    Closed closed;
};

/// `inRoom`: as a network that puts the bytes of a long message where the session would have them.
Heard hear(std::string bytes, Role role, bool compression, std::size_t stride, bool inRoom) {
    Heard heard;
    Session session(role, compression ? std::optional(DeflateAgreement{}) : std::nullopt, {Heard::limit, 65536},
                    std::make_shared<Zeros>());
    for (std::size_t at = 0; at < bytes.size();) {
        std::span<char> input(bytes.data() + at, std::min(stride, bytes.size() - at));
        if (const auto room = session.room(); inRoom && !room.empty()) {
            const auto some = input.first(std::min(input.size(), room.size()));
            std::copy(some.begin(), some.end(), room.begin());
            input = room.first(some.size());
        }
        at += input.size();
        session.receive(input, heard);
    }
    session.receiveEnd();
    session.takeOutput(heard.said);
    heard.closed = session.closed();
    return heard;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const Role role = (data[0] & 1U) != 0 ? Role::client : Role::server;
    const bool compression = (data[0] & 2U) != 0;
    const std::string bytes(textOf(data + 1, size - 1));
    const Heard whole = hear(bytes, role, compression, std::max<std::size_t>(bytes.size(), 1), false);
    const Heard cut = hear(bytes, role, compression, 1U + data[0] / 4, true);
    check(whole.messages == cut.messages, "the same messages");
    check(whole.said == cut.said, "the same answers");
    check(whole.closed.clean == cut.closed.clean && whole.closed.code == cut.closed.code &&
              whole.closed.reason == cut.closed.reason,
          "the same end");
    return 0;
}
