// Our client and our server over real sockets of this machine.

#include <atomic>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/websocket/Client.h"
#include "tests/websocket/Wire.h"

namespace zentavo::websocket::test {
namespace {

struct Setup {
    bool queues;
    bool compression;
};

class Loopback : public ::testing::TestWithParam<Setup> {
protected:
    std::shared_ptr<ThreadQueue> queue() const { return GetParam().queues ? std::make_shared<ThreadQueue>() : nullptr; }
    template <class Options>
    Options options() const {
        Options made;
        if (GetParam().compression) {
            made.compression = DeflateOptions{};
        }
        return made;
    }
};

TEST_P(Loopback, everyMessageComesBackInOrder) {
    WebSocketServer server(echo(), options<ServerOptions>(), queue());
    const auto port = server.listen("127.0.0.1", 0);
    ASSERT_TRUE(port.ok());
    Story story;
    WebSocketClient client(story.handlers(), queue());
    ASSERT_TRUE(client.open(urlOf(*port), options<ClientOptions>()).ok());
    EXPECT_FALSE(client.open(urlOf(*port)).ok()) << "a client connects once";
    ASSERT_TRUE(story.await([&] { return story.opened; }));
    EXPECT_EQ(story.handshake.compression.has_value(), GetParam().compression);

    std::vector<std::string> sent;
    for (int i = 0; i < 2000; ++i) {
        sent.push_back("message " + std::to_string(i));
    }
    for (const std::size_t size : {0U, 125U, 126U, 65535U, 65536U, 3000000U}) {
        sent.push_back(std::string(size, 'x'));
    }
    for (const auto& message : sent) {
        ASSERT_EQ(client.sendText(message), Sent::taken);
    }
    ASSERT_TRUE(story.awaitMessages(sent.size()));
    EXPECT_EQ(story.messages, sent);
    client.close(static_cast<CloseCode>(4000), "done");
    ASSERT_TRUE(story.awaitClosed());
    EXPECT_TRUE(story.closed.clean);
    EXPECT_EQ(static_cast<int>(story.closed.code), 4000);
    EXPECT_EQ(client.sendText("late"), Sent::closed);
}

INSTANTIATE_TEST_SUITE_P(Ways, Loopback,
                         ::testing::Values(Setup{false, false}, Setup{true, false}, Setup{false, true},
                                           Setup{true, true}),
                         [](const auto& way) {
                             return std::string(way.param.queues ? "OnQueues" : "OnTheIOThread") +
                                    (way.param.compression ? "Compressed" : "");
                         });

TEST(Server, asksItsHostAboutRequestsAndTellsTheClient) {
    Story served;
    ServerHandlers handlers = echo();
    handlers.onRequest = [](const ServerRequest& request) {
        Verdict verdict;
        verdict.status = request.origin == "http://evil.example" ? 403 : 101;
        verdict.subprotocol = "chat";
        verdict.headers = {{"X-Room", "7"}};
        return verdict;
    };
    handlers.onClose = [&](const auto& connection, const Closed& closed) {
        served.tell([&] {
            ++served.closes;
            served.closed = closed;
            served.messages.push_back(connection->request().target + " " + connection->subprotocol());
        });
    };
    for (const bool queued : {false, true}) {
        served.closes = 0;
        WebSocketServer server(handlers, {}, queued ? std::make_shared<ThreadQueue>() : nullptr);
        const auto port = server.listen("127.0.0.1", 0);
        ClientOptions options;
        options.headers = {{"Origin", "http://evil.example"}};
        Story refused;
        WebSocketClient stranger(refused.handlers());
        ASSERT_TRUE(stranger.open(urlOf(*port), options).ok());
        ASSERT_TRUE(refused.awaitClosed());
        EXPECT_EQ(refused.status, 403);
        EXPECT_FALSE(refused.opened);

        options.headers.clear();
        options.subprotocols = {"soap", "chat"};
        Story taken;
        {
            WebSocketClient client(taken.handlers());
            ASSERT_TRUE(client.open(urlOf(*port, "/room?n=1"), options).ok());
            ASSERT_TRUE(taken.await([&] { return taken.opened; }));
            EXPECT_EQ(taken.handshake.subprotocol, "chat");
            EXPECT_THAT(taken.handshake.headers, ::testing::Contains(::testing::Pair("X-Room", "7")));
        }
        ASSERT_TRUE(served.awaitClosed()) << "a client that goes says goodbye";
        EXPECT_EQ(served.closed.code, CloseCode::goingAway);
        EXPECT_TRUE(served.closed.clean);
        EXPECT_EQ(served.messages.back(), "/room?n=1 chat");
        EXPECT_EQ(taken.closes, 0) << "a client that is gone is told nothing";
    }
}

TEST(Server, stopsAndSaysGoodbye) {
    WebSocketServer server(echo());
    const auto port = server.listen("127.0.0.1", 0);
    Story story;
    WebSocketClient client(story.handlers());
    ASSERT_TRUE(client.open(urlOf(*port)).ok());
    ASSERT_TRUE(story.await([&] { return story.opened; }));
    server.stop();
    ASSERT_TRUE(story.awaitClosed());
    EXPECT_EQ(story.closed.code, CloseCode::goingAway);
    EXPECT_FALSE(server.listen("127.0.0.1", 0).ok());
    WebSocketServer second(echo());
    EXPECT_FALSE(second.listen("no address", 0).ok());
    const Door taken;
    EXPECT_FALSE(second.listen("127.0.0.1", taken.port()).ok());
    EXPECT_TRUE(second.listen("127.0.0.1", 0).ok()) << "an error is not the last word";
    WebSocketServer third(echo());
    third.stop();
    EXPECT_FALSE(third.listen("127.0.0.1", 0).ok()) << "nobody would be let in";
    ServerOptions odd;
    odd.compression.emplace().client.windowBits = 16;
    EXPECT_FALSE(WebSocketServer(echo(), odd).listen("127.0.0.1", 0).ok());
}

TEST(Server, furtherConnectionsWaitForTheirTurn) {
    ServerOptions options;
    options.maximumConnections = 1;
    WebSocketServer server(echo(), options);
    const auto port = server.listen("127.0.0.1", 0);
    Story first;
    Story second;
    auto one = std::make_unique<WebSocketClient>(first.handlers());
    ASSERT_TRUE(one->open(urlOf(*port)).ok());
    ASSERT_TRUE(first.await([&] { return first.opened; }));
    WebSocketClient two(second.handlers());
    ASSERT_TRUE(two.open(urlOf(*port)).ok());
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(second.await([&] { return true; }) && second.opened);
    one.reset();
    EXPECT_TRUE(second.await([&] { return second.opened; }));
}

TEST(Server, servesConnectionsThatItsHostHasTaken) {
    const Door door;
    ServerOptions options;
    options.maximumConnections = 1;
    auto server = std::make_unique<WebSocketServer>(echo(), options);
    EXPECT_FALSE(server->adopt(-1).ok());
    Story story;
    WebSocketClient client(story.handlers());
    ASSERT_TRUE(client.open(urlOf(door.port())).ok());
    ASSERT_TRUE(server->adopt(door.accept().release()).ok());
    ASSERT_TRUE(story.await([&] { return story.opened; }));
    client.sendText("hello");
    ASSERT_TRUE(story.awaitMessages(1));

    const Wire beyond(door.port());
    beyond.send(upgradeRequest());
    ASSERT_TRUE(server->adopt(door.accept().release()).ok());
    EXPECT_EQ(beyond.receiveAll(), "") << "closed, without an answer";
    server.reset();
    ASSERT_TRUE(story.awaitClosed());
    EXPECT_EQ(story.closed.code, CloseCode::goingAway);
}

TEST(Client, refusesUrlsThatAreNone) {
    WebSocketClient client({});
    for (const char* url : {"", "http://a/", "ws:///x", "ws://a/#part", "ws://user@a/", "nonsense"}) {
        EXPECT_FALSE(client.open(url).ok()) << url;
    }
    EXPECT_EQ(client.sendText("x"), Sent::closed);
    client.close();
}

TEST(Client, tellsThatNobodyListens) {
    const std::uint16_t port = Door().port();
    Story story;
    WebSocketClient client(story.handlers(), std::make_shared<ThreadQueue>());
    ASSERT_TRUE(client.open(urlOf(port)).ok());
    ASSERT_TRUE(story.awaitClosed());
    EXPECT_EQ(story.closed.code, CloseCode::abnormal);
    EXPECT_THAT(story.closed.reason, ::testing::HasSubstr("connecting"));
}

TEST(Client, readsAFrameThatComesInOneReadWithTheAnswer) {
    const Door door;
    Story story;
    WebSocketClient client(story.handlers());
    ASSERT_TRUE(client.open(urlOf(door.port())).ok());
    const Wire wire = door.accept();
    wire.send(upgradeAnswer(wire.receiveHead()) + std::string("\x81\x02hi\x81\x03you", 9));
    ASSERT_TRUE(story.awaitMessages(2));
    EXPECT_THAT(story.messages, ::testing::ElementsAre("hi", "you"));
}

TEST(Client, givesUpOnServersThatStaySilent) {
    const Door door;
    const auto endOf = [&](const ClientOptions& options, bool answers, bool closes) {
        Story story;
        WebSocketClient client(story.handlers());
        EXPECT_TRUE(client.open(urlOf(door.port()), options).ok());
        const Wire wire = door.accept();
        const std::string head = wire.receiveHead();
        if (answers) {
            wire.send(upgradeAnswer(head));
            EXPECT_TRUE(story.await([&] { return story.opened; }));
        }
        if (closes) {
            client.close();
        }
        EXPECT_TRUE(story.awaitClosed());
        EXPECT_FALSE(story.closed.clean);
        return story.closed.reason;
    };
    ClientOptions impatient;
    impatient.handshakeTimeout = 50ms;
    EXPECT_EQ(endOf(impatient, false, false), "the handshake took too long");
    impatient = {};
    impatient.closeTimeout = 50ms;
    EXPECT_EQ(endOf(impatient, true, true), "the other end did not answer our goodbye");
    impatient = {};
    impatient.pingInterval = 50ms;
    impatient.pingTimeout = 50ms;
    EXPECT_EQ(endOf(impatient, true, false), "no answer to our ping");
}

TEST(Client, holdsTheQueueToItsBoundAndTellsWhenItDrained) {
    ClientOptions options;
    options.limits.maximumQueued = 200000;
    const Door door;
    Story story;
    WebSocketClient client(story.handlers(), std::make_shared<ThreadQueue>());
    ASSERT_TRUE(client.open(urlOf(door.port()), options).ok());
    const Wire wire = door.accept();
    wire.send(upgradeAnswer(wire.receiveHead()));
    ASSERT_TRUE(story.await([&] { return story.opened; }));
    const std::string message(50000, 'm');
    std::size_t taken = 0;
    while (client.sendBinary(message) == Sent::taken && taken < 2000) {
        ++taken;
        EXPECT_LE(client.queued(), 200100U);
        std::this_thread::sleep_for(100us);
    }
    ASSERT_LT(taken, 2000U);
    std::size_t received = 0;
    while (received < taken * message.size()) {
        const std::string more = wire.receive();
        ASSERT_FALSE(more.empty());
        received += more.size();
    }
    EXPECT_TRUE(story.await([&] { return story.drains == 1; }));
    EXPECT_EQ(client.sendBinary(message), Sent::taken);
}

// A handler may drop its client, the last event being whichever it is.
TEST(Client, mayBeDestroyedInsideEachOfItsHandlers) {
    for (const bool queued : {false, true}) {
        for (int which = 0; which < 3; ++which) {
            WebSocketServer server(echo());
            const auto port = server.listen("127.0.0.1", 0);
            Story story;
            std::shared_ptr<WebSocketClient> client;
            std::atomic<int> calls = 0;
            const auto drop = [&](int mine) {
                ++calls;
                if (mine == which) {
                    story.tell([&] {
                        client.reset();
                        ++story.closes;
                    });
                    return;
                }
                mine == 0 ? static_cast<void>(client->sendText("x")) : client->close();
            };
            const auto queue = queued ? std::make_shared<ThreadQueue>() : nullptr;
            client = std::make_shared<WebSocketClient>(ClientHandlers{[&](const Handshake&) { drop(0); },
                                                                      [&](MessageKind, std::string_view) { drop(1); },
                                                                      nullptr, [&](const Closed&, int) { drop(2); }},
                                                       queue);
            ASSERT_TRUE(client->open(urlOf(*port)).ok());
            ASSERT_TRUE(story.awaitClosed());
            std::this_thread::sleep_for(5ms);
            EXPECT_EQ(calls, which + 1) << "nothing is told any more";
        }
    }
}

TEST(Client, mayBeDestroyedAtAnyMomentOfTheHandshake) {
    const Door door;
    for (int i = 0; i < 40; ++i) {
        auto client = std::make_unique<WebSocketClient>(ClientHandlers{});
        ASSERT_TRUE(client->open(urlOf(door.port())).ok());
        if (i % 2 == 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(i * 20));
        }
        if (i % 4 == 0) {
            const Wire wire = door.accept();
            wire.send("HTTP/1.1 101 Sw");
            client.reset();
        }
    }
}

TEST(Client, goesThroughAProxy) {
    const Door door;
    ClientOptions options;
    options.proxy = Proxy{"127.0.0.1", door.port(), "Basic eDp5"};
    Story story;
    WebSocketClient client(story.handlers());
    ASSERT_TRUE(client.open("ws://nowhere.example/x", options).ok());
    const Wire wire = door.accept();
    EXPECT_EQ(wire.receiveHead(), "CONNECT nowhere.example:80 HTTP/1.1\r\nHost: nowhere.example:80\r\n"
                                  "Proxy-Authorization: Basic eDp5\r\n\r\n");
    wire.send("HTTP/1.1 200 Go on\r\n\r\n");
    wire.send(upgradeAnswer(wire.receiveHead()));
    EXPECT_TRUE(story.await([&] { return story.opened; }));

    Story refused;
    WebSocketClient second(refused.handlers());
    ASSERT_TRUE(second.open("ws://nowhere.example/x", options).ok());
    const Wire other = door.accept();
    other.receiveHead();
    other.send("HTTP/1.1 407 Proxy Authentication Required\r\n\r\n");
    ASSERT_TRUE(refused.awaitClosed());
    EXPECT_THAT(refused.closed.reason, ::testing::HasSubstr("407"));
}

} // namespace
} // namespace zentavo::websocket::test
