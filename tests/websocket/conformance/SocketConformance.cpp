// Every case against our server and our client over sockets, with a bare socket at the other end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/websocket/Client.h"
#include "tests/websocket/Wire.h"
#include "tests/websocket/conformance/Cases.h"
#include "tests/websocket/conformance/Tally.h"

namespace zentavo::websocket::conformance {
namespace {

using test::Door;
using test::Wire;

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
        const auto answered = withoutReasons(decode(wire.receiveAll(), Role::server));
        judge("server", one.name, answered == one.answered, ::testing::PrintToString(answered));
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
        const auto answered = withoutReasons(decode(bytes, Role::client));
        judge("client", one.name, answered == one.answered && story.awaitClosed() && story.closes == 1,
              ::testing::PrintToString(answered));
    }
}

} // namespace
} // namespace zentavo::websocket::conformance
