// permessage-deflate over sockets, with every set of its parameters and every shape that deflated data may take. The
// other end is a bare socket and zlib with exactly the windows that were agreed upon.

#include <gtest/gtest.h>

#include "tests/websocket/Client.h"
#include "tests/websocket/Wire.h"
#include "tests/websocket/conformance/Cases.h"
#include "tests/websocket/conformance/RawDeflate.h"
#include "tests/websocket/conformance/Tally.h"

namespace zentavo::websocket::conformance {
namespace {

using test::Door;
using test::Wire;

/// One set of parameters; no bits: not named.
struct Set {
    std::optional<int> clientBits;
    std::optional<int> serverBits;
    bool clientTakeover = true;
    bool serverTakeover = true;

    std::string flags() const {
        return std::string(serverTakeover ? "" : "; server_no_context_takeover") +
               (clientTakeover ? "" : "; client_no_context_takeover");
    }
    std::string server() const {
        return serverBits ? "; server_max_window_bits=" + std::to_string(*serverBits) : std::string();
    }
    std::string client() const {
        return clientBits ? "; client_max_window_bits=" + std::to_string(*clientBits) : std::string();
    }
    std::string name() const { return "compression/" + flags() + server() + client(); }
};

std::vector<Set> allSets() {
    std::vector<Set> sets;
    for (int client = 7; client <= 15; ++client) {
        for (int server = 7; server <= 15; ++server) {
            for (const unsigned takeover : {0U, 1U, 2U, 3U}) {
                const auto bits = [](int number) { return number == 7 ? std::nullopt : std::optional(number); };
                sets.push_back({bits(client), bits(server), (takeover & 1U) != 0, (takeover & 2U) != 0});
            }
        }
    }
    return sets;
}

/// Texts of which the later ones refer to the earlier ones, across small and large distances.
const std::vector<std::string>& texts() {
    static const std::vector<std::string> all = [] {
        std::string varied;
        for (int i = 0; varied.size() < 50000; ++i) {
            varied += std::to_string(i * 7919) + ",";
        }
        return std::vector<std::string>{"Hello", "Hello, Hello", "", varied, varied.substr(0, 300), "Hello"};
    }();
    return all;
}

/// Both directions of one connection as the bare end sees them.
struct BareEnd {
    const Wire& wire;
    Role role;
    RawDeflater deflater;
    RawInflater inflater;

    BareEnd(const Wire& connection, Role own, const Set& set)
        : wire(connection), role(own), deflater(bits(set, own), takeover(set, own)),
          inflater(bits(set, other(own)), takeover(set, other(own))) {}

    static Role other(Role role) { return role == Role::client ? Role::server : Role::client; }
    static int bits(const Set& set, Role role) {
        return (role == Role::client ? set.clientBits : set.serverBits).value_or(15);
    }
    static bool takeover(const Set& set, Role role) {
        return role == Role::client ? set.clientTakeover : set.serverTakeover;
    }

    void send(const std::vector<RawFrame>& frames) const { wire.send(encode(frames, role)); }

    /// What comes until a close frame or the end.
    std::vector<RawFrame> receive(std::string bytes = {}) const {
        for (;;) {
            const auto frames = decode(bytes, other(role));
            const bool whole = !frames.empty() && frames.back().first != 0;
            const std::string more = whole && frames.back().first == 0x88 ? std::string() : wire.receive();
            if (more.empty()) {
                return frames;
            }
            bytes += more;
        }
    }

    /// Sends all texts and a goodbye; whether all came back, compressed with what was agreed.
    std::string converse() {
        std::vector<RawFrame> frames;
        for (const auto& text : texts()) {
            frames.push_back({0xC1, deflater.message(text)});
        }
        frames.push_back(close(1000));
        send(frames);
        const auto answered = receive();
        if (answered.size() != frames.size() || answered.back() != close(1000)) {
            return ::testing::PrintToString(answered);
        }
        std::size_t compressed = 0;
        for (std::size_t i = 0; i < texts().size(); ++i) {
            const RawFrame& frame = answered[i];
            const bool packed = frame.first == 0xC1;
            compressed += packed ? 1 : 0;
            if ((packed ? inflater.message(frame.payload) : frame.payload) != texts()[i]) {
                return "text " + std::to_string(i) + " did not come back";
            }
        }
        return compressed < texts().size() - 1 ? "not compressed" : "";
    }
};

DeflateOptions granted(const Set& set = {}) {
    DeflateOptions options;
    options.client = {set.clientBits.value_or(15), set.clientTakeover};
    options.server = {set.serverBits.value_or(15), set.serverTakeover};
    options.threshold = 0;
    return options;
}

TEST(CompressionConformance, ourServerKeepsToEverySetOfParametersThatIsOffered) {
    ServerOptions options;
    options.compression = granted();
    WebSocketServer server(test::echo(), options);
    const auto port = server.listen("127.0.0.1", 0);
    ASSERT_TRUE(port.ok());
    for (const Set& set : allSets()) {
        const Wire wire(*port);
        wire.send(test::upgradeRequest("Sec-WebSocket-Extensions: permessage-deflate" + set.client() + set.flags() +
                                       set.server() + "\r\n"));
        const std::string head = wire.receiveHead();
        // The whole window is what a client has anyway.
        const std::string wanted = "Sec-WebSocket-Extensions: permessage-deflate" + set.flags() + set.server() +
                                   (set.clientBits.value_or(15) < 15 ? set.client() : "") + "\r\n";
        const bool agreed = head.find(wanted) != std::string::npos;
        judge("server", set.name(), agreed, head);
        if (agreed) {
            const std::string wrong = BareEnd(wire, Role::client, set).converse();
            judge("server", set.name(), wrong.empty(), wrong);
        }
    }
}

/// A connection of our client to a bare server which agrees to `set`.
class ClientUnderTest {
public:
    ClientUnderTest(const Door& door, const Set& set, const Set& wished) {
        ClientHandlers handlers = story_.handlers();
        handlers.onMessage = [this](MessageKind kind, std::string_view content) { client_->send(kind, content); };
        client_ = std::make_unique<WebSocketClient>(handlers);
        ClientOptions options;
        options.compression = granted(wished);
        options.limits.maximumMessage = messageLimit;
        EXPECT_TRUE(client_->open(test::urlOf(door.port()), options).ok());
        wire_.emplace(door.accept());
        offer_ = wire_->receiveHead();
        wire_->send(test::upgradeAnswer(offer_, "Sec-WebSocket-Extensions: permessage-deflate" + set.flags() +
                                                    set.server() + set.client() + "\r\n"));
    }
    /// Waits for the last handler: what it writes down is about to go.
    ~ClientUnderTest() {
        wire_->endSending();
        story_.awaitClosed();
    }
    ClientUnderTest(const ClientUnderTest&) = delete;
    ClientUnderTest& operator=(const ClientUnderTest&) = delete;

    const Wire& wire() const { return *wire_; }
    const std::string& offer() const { return offer_; }
    bool ended() {
        wire_->endSending();
        return story_.awaitClosed() && story_.closes == 1;
    }

private:
    test::Story story_;
    std::unique_ptr<WebSocketClient> client_;
    std::optional<Wire> wire_;
    std::string offer_;
};

TEST(CompressionConformance, ourClientKeepsToEverySetOfParametersThatIsAnswered) {
    const Door door;
    for (const Set& set : allSets()) {
        ClientUnderTest client(door, set, {});
        const std::string wrong = BareEnd(client.wire(), Role::server, set).converse();
        judge("client", set.name(), wrong.empty() && client.ended(), wrong);
    }
}

TEST(CompressionConformance, ourClientOffersWhatItsHostWishesFor) {
    const Door door;
    for (const Set& set : allSets()) {
        if (set.clientBits.has_value() != set.serverBits.has_value()) {
            continue;
        }
        ClientUnderTest client(door, set, set);
        const auto named = [](std::optional<int> bits) { return bits.value_or(15) < 15; };
        const std::string offer = "Sec-WebSocket-Extensions: permessage-deflate" + set.flags() +
                                  (named(set.serverBits) ? set.server() : "") +
                                  (named(set.clientBits) ? set.client() : "; client_max_window_bits") + "\r\n";
        const bool offered = client.offer().find(offer) != std::string::npos;
        const std::string wrong = BareEnd(client.wire(), Role::server, set).converse();
        judge("client", "offer/" + set.name(), offered && wrong.empty(), client.offer() + wrong);
    }
}

/// Frames that an end with a whole window sends, and what an echo makes of them; close frames stand for themselves.
struct Shape {
    std::string name;
    std::vector<RawFrame> sent;
    std::vector<std::string> messages;
    unsigned closeCode;
};

std::vector<Shape> shapes() {
    const std::string text(texts()[3]);
    const RawFrame bye = close(1000);
    std::vector<Shape> all;
    const auto add = [&](const std::string& name, std::vector<RawFrame> sent, std::vector<std::string> messages,
                         unsigned code = 1000) {
        if (code == 1000) {
            sent.push_back(bye);
        }
        all.push_back({"deflate/" + name, std::move(sent), std::move(messages), code});
    };
    RawDeflater fresh(15, false);
    const std::string hello = fresh.message("Hello");
    const std::string whole = fresh.message(text);
    add("not-compressed-between", {{0xC1, hello}, {0x81, "plain"}, {0xC1, hello}}, {"Hello", "plain", "Hello"});
    add("in-two-frames", {{0x41, whole.substr(0, 1000)}, {0x80, whole.substr(1000)}}, {text});
    std::vector<RawFrame> bytewise{{0x41, ""}};
    for (const char c : hello) {
        bytewise.push_back({0x00, std::string(1, c)});
        bytewise.push_back({0x89, ""});
    }
    bytewise.push_back({0x80, ""});
    all.push_back({"deflate/a-byte-a-frame-with-pings-between", bytewise, {"Hello"}, 1000});
    all.back().sent.push_back(bye);
    add("empty-as-one-zero", {{0xC1, std::string(1, '\0')}}, {""});
    add("empty-as-nothing", {{0xC1, ""}}, {""});
    add("empty-as-fixed-block", {{0xC1, std::string("\x02\x00", 2)}}, {""});
    add("stored-block", {{0xC1, std::string("\x00\x05\x00\xFA\xFFHello\x00", 11)}}, {"Hello"});
    add("final-block", {{0xC1, std::string("\xF3\x48\xCD\xC9\xC9\x07\x00\x00", 8)}}, {"Hello"});
    add("final-block-of-zlib", {{0xC1, fresh.blocks(text, Z_FINISH) + std::string(1, '\0')}, {0xC1, hello}},
        {text, "Hello"});
    std::string blocks = fresh.blocks("Hel", Z_SYNC_FLUSH);
    blocks += fresh.blocks("", Z_FULL_FLUSH);
    blocks += fresh.blocks("l", Z_PARTIAL_FLUSH);
    blocks += fresh.message("o");
    add("many-blocks", {{0xC1, blocks}}, {"Hello"});
    add("tail-left-on", {{0xC1, hello + std::string("\x00\x00\xFF\xFF", 4)}}, {"Hello"});
    add("limit-exactly", {{0xC2, RawDeflater(15, false).message(std::string(messageLimit, 'x'))}},
        {std::string(messageLimit, 'x')});
    add("bomb", {{0xC2, RawDeflater(15, false).message(std::string(messageLimit + 1, 'x'))}}, {}, 1009);
    add("large-bomb", {{0xC2, RawDeflater(15, false).message(std::string(50000000, 'x'))}}, {}, 1009);
    add("bomb-in-parts", {{0x42, RawDeflater(15, false).message(std::string(messageLimit + 1, 'x'))}}, {}, 1009);
    add("marked-continuation", {{0x41, hello.substr(0, 3)}, {0xC0, hello.substr(3)}}, {}, 1002);
    add("marked-ping", {{0xC9, hello}}, {}, 1002);
    add("marked-close", {{0xC8, ""}}, {}, 1002);
    add("other-reserved-bit", {{0xE1, hello}}, {}, 1002);
    add("text-no-utf8", {{0xC1, RawDeflater(15, false).message("abc\xED\xA0\x80")}}, {}, 1007);
    add("text-ends-inside-character", {{0xC1, RawDeflater(15, false).message("abc\xE2\x82")}}, {}, 1007);
    add("text-no-utf8-before-too-much",
        {{0xC1, RawDeflater(15, false).message("\xFF" + std::string(messageLimit, 'x'))}}, {}, 1007);
    add("corrupt", {{0xC1, "\xFF\xFF\xFF\xFF"}}, {}, 1007);
    add("reserved-block", {{0xC1, std::string("\x06\x00", 2)}}, {}, 1007);
    add("refers-before-the-beginning", {{0xC1, std::string("\xF2\x00\x11\x00\x00", 5)}}, {}, 1007);
    add("ends-inside-a-block", {{0xC1, std::string("\x00\x05\x00\xFA\xFFHe", 7)}}, {}, 1007);
    return all;
}

/// What `end` answers to `shape`, as a complaint.
std::string complaint(BareEnd& end, const Shape& shape) {
    end.send(shape.sent);
    std::vector<std::string> messages;
    unsigned code = 0;
    for (const RawFrame& frame : end.receive()) {
        if (frame.first == 0x88 && frame.payload.size() >= 2) {
            code = static_cast<unsigned char>(frame.payload[0]) * 256U + static_cast<unsigned char>(frame.payload[1]);
        } else if ((frame.first & 0x0F) < 8) {
            const bool packed = (frame.first & 0x40) != 0;
            messages.push_back(packed ? end.inflater.message(frame.payload).value_or("?") : frame.payload);
        }
    }
    return messages == shape.messages && code == shape.closeCode
               ? ""
               : "closed with " + std::to_string(code) + " after " + std::to_string(messages.size()) + " messages";
}

TEST(CompressionConformance, everyShapeOfDeflatedDataIsReadOrRefused) {
    ServerOptions options;
    options.compression = granted();
    options.limits.maximumMessage = messageLimit;
    WebSocketServer server(test::echo(), options);
    const auto port = server.listen("127.0.0.1", 0);
    ASSERT_TRUE(port.ok());
    const Door door;
    for (const Shape& shape : shapes()) {
        const Wire wire(*port);
        wire.send(test::upgradeRequest("Sec-WebSocket-Extensions: permessage-deflate\r\n"));
        ASSERT_NE(wire.receiveHead().find("permessage-deflate\r\n"), std::string::npos);
        BareEnd client(wire, Role::client, {});
        std::string wrong = complaint(client, shape);
        judge("server", shape.name, wrong.empty(), wrong);

        ClientUnderTest ours(door, {}, {});
        BareEnd bare(ours.wire(), Role::server, {});
        wrong = complaint(bare, shape);
        judge("client", shape.name, wrong.empty() && ours.ended(), wrong);
    }
}

} // namespace
} // namespace zentavo::websocket::conformance
