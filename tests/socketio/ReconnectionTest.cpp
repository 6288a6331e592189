// Connections that end: who comes back, when, and with what.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/socketio/ManagerFixture.h"

namespace zentavo::socketio {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ReconnectionTest : public test::ManagerFixture {};

TEST_F(ReconnectionTest, reconnectsAsksForAuthAnewAndJoinsAgain) {
    start();
    std::vector<std::function<void(Map)>> asked;
    const auto socket = join("/", {{}, [&](std::function<void(Map)> reply) { asked.push_back(std::move(reply)); }});
    shake();
    EXPECT_THAT(takeSent(), IsEmpty());
    asked[0]({{"token", 1}});
    asked[0]({{"token", "twice"}});
    EXPECT_THAT(takeSent(), ElementsAre(R"(40{"token":1})"));
    server(R"(40{"sid":"a"})");
    int events = 0;
    socket->on("e", [&](const Event&) { ++events; });
    lose();
    EXPECT_EQ(socket->id(), "");
    EXPECT_THAT(takeTold(), ElementsAre("connect", "transport close"));
    system.queues->advance(5s - 1ms);
    EXPECT_EQ(sockets->connections.size(), 1U);
    system.queues->advance(10s + 1ms);
    ASSERT_EQ(sockets->connections.size(), 2U);
    lose(); // nobody listens
    awaitAttempt();
    lose();
    EXPECT_THAT(takeTold(), ElementsAre("attempt 1", HasSubstr("error transport error: WebSocket code 1006"),
                                        "attempt 2", HasSubstr("error transport error")));
    system.queues->advance(20s - 1ms);
    EXPECT_EQ(sockets->connections.size(), 3U);
    system.queues->advance(10s + 1ms);
    socket->emit("meanwhile");
    shake();
    asked[0]({{"token", "stale"}});
    asked[1]({{"token", 2}});
    EXPECT_THAT(takeSent(), ElementsAre(R"(40{"token":2})"));
    server(R"(40{"sid":"b"})");
    EXPECT_THAT(takeSent(), ElementsAre(R"(42["meanwhile"])"));
    server(R"(42["e"])");
    EXPECT_EQ(events, 1) << "handlers are not doubled";
    EXPECT_THAT(takeTold(), ElementsAre("attempt 3", "reconnected after 3", "connect"));
    EXPECT_EQ(socket->id(), "b");
}

TEST_F(ReconnectionTest, stopsWhenItIsToldToWhileReconnecting) {
    ManagerOptions options;
    options.reconnectAttempts = 2;
    start(options);
    auto socket = join();
    lose();
    socket->disconnect();
    run();
    EXPECT_EQ(system.queues->timers(), 0U);
    system.queues->advance(1h);
    EXPECT_EQ(sockets->connections.size(), 1U);

    socket->connect();
    run();
    socket->disconnect(); // while it connects
    run();
    EXPECT_TRUE(sockets->last().released);
    takeTold();
    socket->connect();
    run();
    for (int i = 0; i < 2; ++i) {
        lose();
        awaitAttempt();
    }
    lose();
    EXPECT_EQ(takeTold().back(), "failed");
    EXPECT_EQ(sockets->connections.size(), 5U);
    socket->connect();
    run();
    EXPECT_EQ(sockets->connections.size(), 6U) << "the host may begin again";

    options.reconnects = false;
    socket.reset();
    start(options);
    const auto other = join();
    lose();
    EXPECT_EQ(system.queues->timers(), 0U);
}

TEST_F(ReconnectionTest, doesNotComeBackWhenTheServerSendsItAway) {
    start();
    const auto socket = join();
    const auto other = join("/other");
    shake();
    server(R"(40{"sid":"a"})");
    server(R"(40/other,{"sid":"b"})");
    server("41");
    EXPECT_FALSE(sockets->last().released) << "the other one is still there";
    server("41/other,");
    EXPECT_TRUE(sockets->last().released);
    EXPECT_THAT(takeTold(),
                ElementsAre("connect", "/other connect", "io server disconnect", "/other io server disconnect"));
    system.queues->advance(1h);
    EXPECT_EQ(sockets->connections.size(), 1U);

    // A server of another version answers without an id.
    socket->connect();
    run();
    shake();
    server("40");
    EXPECT_THAT(takeTold(), ElementsAre(HasSubstr("refused the server speaks another version")));
}

TEST_F(ReconnectionTest, endsTheConnectionOverGarbage) {
    start();
    const auto socket = join();
    shake();
    server(R"(40{"sid":"a"})");
    for (const char* garbage : {"4x", R"(4511-["e"])", R"(42{"not":"a list"})"}) {
        takeTold();
        server(garbage);
        EXPECT_THAT(takeTold(), ElementsAre("parse error")) << garbage;
        EXPECT_TRUE(sockets->last().released);
        awaitAttempt();
        shake();
        server(R"(40{"sid":"a"})");
    }
    EXPECT_TRUE(socket->connected());
    // A packet's attachments do not reach into the next connection.
    server(R"(451-["e",{"_placeholder":true,"num":0}])");
    lose();
    awaitAttempt();
    shake();
    takeTold();
    sockets->last().sayBinary("x");
    EXPECT_THAT(takeTold(), ElementsAre(HasSubstr("error parse error")));
}

TEST_F(ReconnectionTest, recoversWhatTheServerKept) {
    start();
    const auto socket = join();
    shake();
    server(R"(40{"sid":"a","pid":"P"})");
    server(R"(42["e",1,"offset-1"])");
    lose();
    awaitAttempt();
    shake();
    EXPECT_THAT(takeSent(), ElementsAre(R"(40{"pid":"P","offset":"offset-1"})"));
    server(R"(40{"sid":"a","pid":"P"})");
    EXPECT_TRUE(socket->recovered());

    // What was missed comes before the answer, and is told before "connect".
    socket->on("e", [&](const Event& event) {
        say("e " + std::string(socket->recovered() ? "recovered" : "early"));
        event.acknowledge({"got"});
    });
    lose();
    awaitAttempt();
    shake();
    server(R"(427["e",2,"offset-2"])");
    takeSent();
    takeTold();
    server(R"(40{"sid":"a","pid":"P"})");
    EXPECT_THAT(takeTold(), ElementsAre("e recovered", "connect"));
    EXPECT_THAT(takeSent(), ElementsAre(R"(437["got"])"));
    lose();
    awaitAttempt();
    shake();
    EXPECT_THAT(takeSent(), ElementsAre(R"(40{"pid":"P","offset":"offset-2"})"));

    // What came before a connection that never came about is gone; so is what is too much, and then nothing is claimed.
    server(R"(42["e",3,"offset-3"])");
    lose();
    awaitAttempt();
    shake();
    for (int i = 0; i < 20'000; ++i) {
        sockets->last().say(R"(42["e",4,"offset-4"])");
    }
    takeTold();
    server(R"(40{"sid":"a","pid":"P"})");
    EXPECT_THAT(takeTold(), ElementsAre("connect"));
    EXPECT_FALSE(socket->recovered());
}

} // namespace
} // namespace zentavo::socketio
