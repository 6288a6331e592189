// Every case against our server and our client over sockets, with a bare socket at the other end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/websocket/Client.h"
#include "tests/websocket/Wire.h"
#include "tests/websocket/conformance/Cases.h"

namespace zentavo::websocket::conformance {
namespace {

using test::Door;
using test::Wire;

std::vector<RawFrame> withoutReasons(std::vector<RawFrame> frames) {
    for (RawFrame& frame : frames) {
        if (frame.first == 0x88) {
            frame.payload.resize(std::min<std::size_t>(frame.payload.size(), 2));
        }
    }
    return frames;
}

template <class Options>
Options limited() {
    Options options;
    options.limits.maximumMessage = messageLimit;
    return options;
}

TEST(SocketConformance, ourServerAnswersEveryCaseAndEndsTheStream) {
    WebSocketServer server(test::echo(), limited<ServerOptions>());
    const auto port = server.listen("127.0.0.1", 0);
    ASSERT_TRUE(port.ok());
    for (const Case& one : allCases()) {
        const Wire wire(*port);
        wire.send(test::upgradeRequest());
        const std::string head = wire.receiveHead();
        ASSERT_TRUE(head.starts_with("HTTP/1.1 101 ")) << head;
        wire.send(encode(one.sent, Role::client));
        ASSERT_EQ(withoutReasons(decode(wire.receiveAll(), Role::server)), one.answered) << one.name;
    }
}

TEST(SocketConformance, ourClientAnswersEveryCaseFromTheFirstReadOn) {
    const Door door;
    for (const Case& one : allCases()) {
        test::Story story;
        std::unique_ptr<WebSocketClient> client;
        ClientHandlers handlers = story.handlers();
        handlers.onMessage = [&](MessageKind kind, std::string_view content) { client->send(kind, content); };
        client = std::make_unique<WebSocketClient>(handlers);
        ASSERT_TRUE(client->open(test::urlOf(door.port()), limited<ClientOptions>()).ok());
        const Wire wire = door.accept();
        // The frames come on the heels of the answer.
        wire.send(test::upgradeAnswer(wire.receiveHead()) + encode(one.sent, Role::server));
        std::string bytes;
        while (decode(bytes, Role::client).size() < one.answered.size()) {
            const std::string more = wire.receive();
            if (more.empty()) {
                break;
            }
            bytes += more;
        }
        wire.endSending();
        bytes += wire.receiveAll();
        ASSERT_EQ(withoutReasons(decode(bytes, Role::client)), one.answered) << one.name;
        ASSERT_TRUE(story.awaitClosed()) << one.name;
        ASSERT_EQ(story.closes, 1) << one.name;
    }
}

} // namespace
} // namespace zentavo::websocket::conformance
