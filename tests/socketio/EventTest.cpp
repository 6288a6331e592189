// Events, their handlers and their acknowledgements.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/socketio/ManagerFixture.h"

namespace zentavo::socketio {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EventTest : public test::ManagerFixture {};

TEST_F(EventTest, callsHandlersOnceEachAndNoneThatIsGone) {
    start();
    const auto socket = join();
    shake();
    server(R"(40{"sid":"a"})");
    HandlerId second{};
    socket->onAny([&](const Event& event) { say("any " + event.name); });
    socket->once("e", [&](const Event&) { say("once"); });
    socket->on("e", [&](const Event&) {
        say("first");
        socket->off(second);
    });
    second = socket->on("e", [&](const Event&) { say("second"); });
    takeTold();
    server(R"(42["e"])");
    server(R"(42["e"])");
    EXPECT_THAT(takeTold(), ElementsAre("any e", "once", "first", "any e", "first"));
    socket->onAnyOutgoing([&](const Event& event) { say("out " + event.name); });
    socket->off("e");
    socket->emit("mine");
    server(R"(42["e"])");
    EXPECT_THAT(takeTold(), ElementsAre("out mine", "any e"));
    socket->offAll();
    socket->emit("mine");
    server(R"(42["e"])");
    lose();
    EXPECT_THAT(takeTold(), IsEmpty());
}

TEST_F(EventTest, acknowledgesBothWays) {
    start();
    const auto socket = join();
    shake();
    server(R"(40{"sid":"a"})");
    takeSent();
    takeTold();
    socket->emit("q", {"x"}, ack("zero"));
    socket->emit("q", {}, 5s, ack("one"));
    socket->emit("q", {Binary{"\1"}}, 5s, ack("two"));
    EXPECT_THAT(takeSent(),
                ElementsAre(R"(420["q","x"])", R"(421["q"])", R"(451-2["q",{"_placeholder":true,"num":0}])", "b:\1"));
    server(R"(432["second"])");
    server(R"(430["first"])");
    server(R"(430["again"])");
    system.queues->advance(5s);
    server(R"(431["too late"])");
    EXPECT_THAT(takeTold(), ElementsAre("two:second", "zero:first", "one:late"));

    std::vector<Event> questions;
    socket->on("why", [&](const Event& event) { questions.push_back(event); });
    server(R"(427["why"])");
    server(R"(42["why"])");
    ASSERT_EQ(questions.size(), 2U);
    EXPECT_FALSE(questions[0].acknowledge({"\xff"}).ok()) << "nobody can say that";
    EXPECT_TRUE(questions[0].acknowledge({"because", Binary{"\2"}}).ok());
    EXPECT_FALSE(questions[0].acknowledge().ok()) << "once";
    EXPECT_FALSE(questions[1].acknowledge) << "the server does not ask";
    EXPECT_THAT(takeSent(), ElementsAre(R"(461-7["because",{"_placeholder":true,"num":0}])", "b:\2"));

    server(R"(428["why"])");
    socket->emit("q", {}, ack("three"));
    lose();
    EXPECT_THAT(takeTold(), ElementsAre("three:lost", "transport close"));
    socket->emit("waits", {}, 1s, ack("four"));
    socket->emit("waits too", {}, ack("five"));
    awaitAttempt();
    shake();
    server(R"(40{"sid":"b"})");
    EXPECT_TRUE(questions[2].acknowledge({"stale"}).ok());
    EXPECT_THAT(takeSent(), ElementsAre("40", R"(425["waits too"])")) << "neither what is too late nor a stale answer";
    EXPECT_EQ(takeTold()[0], "four:late");
}

TEST_F(EventTest, keepsWhatWaitsAndDropsWhatIsVolatile) {
    ManagerOptions options;
    options.limits.maximumBuffered = 40;
    start(options);
    const auto socket = join();
    socket->emitVolatile("v");
    EXPECT_TRUE(socket->emit("a", {"0123456789"}).ok());
    EXPECT_FALSE(socket->emit("a", {"0123456789012345"}).ok()) << "too much";
    EXPECT_TRUE(socket->emit("b").ok());
    shake();
    server(R"(40{"sid":"a"})");
    EXPECT_THAT(takeSent(), ElementsAre("40", R"(42["a","0123456789"])", R"(42["b"])"));
    socket->emitVolatile("v");
    EXPECT_THAT(takeSent(), ElementsAre(R"(42["v"])"));
    sockets->last().queued = 1'000'000; // the network is behind, though there is room
    socket->emitVolatile("v");
    socket->emit("kept");
    EXPECT_THAT(takeSent(), ElementsAre(R"(42["kept"])"));
    sockets->last().queued = 100;
    socket->emitVolatile("v");
    EXPECT_THAT(takeSent(), ElementsAre(R"(42["v"])"));
    sockets->last().full = true;
    socket->emit("c");
    socket->emitVolatile("w");
    run();
    sockets->last().drain();
    EXPECT_THAT(takeSent(), ElementsAre(R"(42["c"])"));
    EXPECT_TRUE(socket->emit("a", {std::string(100, 'x')}).ok()) << "alone it may be larger";
    run();
    const auto watch = socket->onAnyOutgoing([](const Event&) {});
    EXPECT_TRUE(socket->emit("b").ok());
    lose();
    EXPECT_TRUE(socket->emit("a", {"0123"}).ok());
    EXPECT_FALSE(socket->emit("a", {"0123"}).ok()) << "what handlers will see waits beside it";
    socket->off(watch);
    EXPECT_TRUE(socket->emit("b").ok());
}

} // namespace
} // namespace zentavo::socketio
