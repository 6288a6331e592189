// Managers and sockets between a scripted server and a turned clock.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/MemoryPlatform.h"
#include "tests/socketio/ScriptedWebSockets.h"
#include "zentavo/socketio/SocketManager.h"

namespace zentavo::socketio {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ManagerTest : public ::testing::Test {
protected:
    void start(ManagerOptions options = {}) {
        options.transports = {TransportKind::webSocket};
        ManagerHandlers handlers;
        handlers.onReconnectAttempt = [this](unsigned attempt) { say("attempt " + std::to_string(attempt)); };
        handlers.onReconnect = [this](unsigned attempts) { say("reconnected after " + std::to_string(attempts)); };
        handlers.onReconnectFailed = [this] { say("failed"); };
        auto made = SocketManager::make("http://chat.example", options,
                                        {queue, system.clock, system.random, nullptr, sockets}, handlers);
        ASSERT_TRUE(made.ok()) << made.error().message;
        manager = *made;
    }
    std::shared_ptr<SocketIOClient> join(const char* name = "/", Auth auth = {}) {
        auto socket = *manager->socket(name, std::move(auth));
        const std::string prefix = name == std::string("/") ? "" : std::string(name) + " ";
        socket->onConnect([this, prefix] { say(prefix + "connect"); });
        socket->onDisconnect([this, prefix](const Disconnection& how) { say(prefix + text(how.reason)); });
        socket->onConnectError([this, prefix](const ConnectError& error) {
            const auto* code = error.data.asMap() == nullptr ? nullptr : error.data.asMap()->find("code");
            say(prefix + (error.refused ? "refused " : "error ") + error.message + (code ? *code->asString() : ""));
        });
        socket->connect();
        run();
        return socket;
    }
    /// The server takes the newest connection.
    void shake() {
        sockets->last().open();
        sockets->last().say(R"(0{"sid":"E","pingInterval":25000,"pingTimeout":20000})");
        run();
    }
    void server(std::string_view text) {
        run();
        sockets->last().say(text);
        run();
    }
    void lose() {
        run();
        sockets->last().close(1006);
        run();
    }
    /// Waits for the next attempt, in steps shorter than the connect timeout.
    void awaitAttempt() {
        run();
        for (const auto before = sockets->connections.size(); sockets->connections.size() == before;) {
            ASSERT_GT(system.queues->timers(), 0U);
            system.queues->advance(1s);
        }
    }
    void run() { system.queues->runUntilIdle(); }
    void say(std::string what) { told.push_back(std::move(what)); }
    std::vector<std::string> takeTold() { return std::exchange(told, {}); }
    std::vector<std::string> takeSent() {
        run();
        return sockets->last().takeSent();
    }
    AckHandler ack(std::string label) {
        return [this, label](const Result<Arguments, AckFailure>& result) {
            say(label + (result.ok() ? ":" + *(*result)[0].asString()
                                     : (result.error() == AckFailure::timedOut ? ":late" : ":lost")));
        };
    }

    testing::MemoryPlatform system;
    const std::shared_ptr<platform::DispatchQueue> queue = system.queues->make("socketio", platform::QueueKind::serial);
    const std::shared_ptr<test::ScriptedWebSockets> sockets = std::make_shared<test::ScriptedWebSockets>();
    std::shared_ptr<SocketManager> manager;
    std::vector<std::string> told;
};

TEST_F(ManagerTest, joinsSeveralNamespacesOverOneConnection) {
    start();
    const auto main = join();
    const auto admin = join("/admin", {{{"token", "secret"}}, nullptr});
    EXPECT_EQ(main, *manager->socket("")) << "one socket for one namespace";
    ASSERT_TRUE(main->emit("early", {1}).ok());
    shake();
    EXPECT_THAT(takeSent(), ElementsAre("40", R"(40/admin,{"token":"secret"})"));
    server(R"(42["too early"])");
    server(R"(40{"sid":"main-id"})");
    EXPECT_THAT(takeSent(), ElementsAre(R"(42["early",1])"));
    EXPECT_TRUE(main->connected());
    EXPECT_EQ(main->id(), "main-id");
    EXPECT_FALSE(admin->connected());
    server(R"(44/admin,{"message":"not authorized","data":{"code":"E1"}})");
    EXPECT_THAT(takeTold(), ElementsAre("connect", "/admin refused not authorizedE1"));

    // Only now may it try again, and with new credentials.
    admin->setAuth({{{"token", "better"}}, nullptr});
    admin->connect();
    EXPECT_THAT(takeSent(), ElementsAre(R"(40/admin,{"token":"better"})"));
    server(R"(40/admin,{"sid":"admin-id"})");
    admin->on("e", [&](const Event& event) { say("admin " + *event.arguments[0].asString()); });
    main->on("e", [&](const Event& event) { say("main " + *event.arguments[0].asString()); });
    server(R"(42/admin,["e","x"])");
    server(R"(42["e","y"])");
    server(R"(42/nobody,["e","z"])");
    EXPECT_THAT(takeTold(), ElementsAre("/admin connect", "admin x", "main y"));

    admin->emit("last");
    admin->disconnect();
    EXPECT_THAT(takeSent(), ElementsAre(R"(42/admin,["last"])", "41/admin,"));
    EXPECT_TRUE(main->connected());
    manager->disconnect();
    EXPECT_THAT(takeSent(), ElementsAre("41"));
    EXPECT_THAT(takeTold(), ElementsAre("/admin io client disconnect", "io client disconnect"));
    EXPECT_TRUE(sockets->last().released);
    EXPECT_EQ(system.queues->timers(), 0U);
}

TEST_F(ManagerTest, refusesWhatCannotBe) {
    start();
    const auto socket = join();
    EXPECT_FALSE(socket->emit("connect").ok());
    EXPECT_FALSE(socket->emit("x", {"\xff"}).ok());
    EXPECT_FALSE(manager->socket("/a,b").ok());
    const Services services{queue, system.clock, system.random, nullptr, sockets};
    EXPECT_FALSE(SocketManager::make("http://a", {}, services).ok()) << "polling without a URL session";
    ManagerOptions none;
    none.transports.clear();
    EXPECT_FALSE(SocketManager::make("http://a", none, services).ok());
    EXPECT_FALSE(SocketManager::make("nothing", {}, services).ok());
}

TEST_F(ManagerTest, callsHandlersOnceEachAndNoneThatIsGone) {
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

TEST_F(ManagerTest, acknowledgesBothWays) {
    start();
    const auto socket = join();
    shake();
    server(R"(40{"sid":"a"})");
    takeSent();
    takeTold();
    socket->emit("q", {"x"}, ack("zero"));
    socket->emit("q", {}, ack("one"), 5s);
    socket->emit("q", {Binary{"\1"}}, ack("two"), 5s);
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
    EXPECT_TRUE(questions[0].acknowledge({"because", Binary{"\2"}}).ok());
    EXPECT_FALSE(questions[0].acknowledge().ok()) << "once";
    EXPECT_FALSE(questions[1].acknowledge) << "the server does not ask";
    EXPECT_THAT(takeSent(), ElementsAre(R"(461-7["because",{"_placeholder":true,"num":0}])", "b:\2"));

    server(R"(428["why"])");
    socket->emit("q", {}, ack("three"));
    lose();
    EXPECT_THAT(takeTold(), ElementsAre("three:lost", "transport close"));
    socket->emit("waits", {}, ack("four"), 1s);
    socket->emit("waits too", {}, ack("five"));
    awaitAttempt();
    shake();
    server(R"(40{"sid":"b"})");
    EXPECT_TRUE(questions[2].acknowledge({"stale"}).ok());
    EXPECT_THAT(takeSent(), ElementsAre("40", R"(425["waits too"])")) << "neither what is too late nor a stale answer";
    EXPECT_EQ(takeTold()[0], "four:late");
}

TEST_F(ManagerTest, keepsWhatWaitsAndDropsWhatIsVolatile) {
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
    sockets->last().full = true;
    socket->emit("c");
    socket->emitVolatile("w");
    run();
    sockets->last().drain();
    EXPECT_THAT(takeSent(), ElementsAre(R"(42["c"])"));
    EXPECT_TRUE(socket->emit("a", {std::string(100, 'x')}).ok()) << "alone it may be larger";
}

TEST_F(ManagerTest, reconnectsAsksForAuthAnewAndJoinsAgain) {
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

TEST_F(ManagerTest, stopsWhenItIsToldToWhileReconnecting) {
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

TEST_F(ManagerTest, doesNotComeBackWhenTheServerSendsItAway) {
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

TEST_F(ManagerTest, endsTheConnectionOverGarbage) {
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

TEST_F(ManagerTest, recoversWhatTheServerKept) {
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
}

TEST_F(ManagerTest, maySeeItsSocketsGoAtAnyMoment) {
    // Inside a handler, with the manager.
    start();
    auto socket = join();
    shake();
    server(R"(40{"sid":"a"})");
    socket->on("e", [&](const Event& event) {
        say(event.name);
        manager.reset();
        socket.reset();
    });
    socket->on("e", [&](const Event&) { say("never"); });
    takeTold();
    server(R"(42["e"])");
    EXPECT_THAT(takeTold(), ElementsAre("e"));
    EXPECT_EQ(takeSent().back(), "41") << "a goodbye";
    EXPECT_TRUE(sockets->last().released);
    EXPECT_EQ(system.queues->timers(), 0U);

    // At each step of a connection; what was posted runs afterwards.
    for (int step = 0; step < 6; ++step) {
        start();
        socket = *manager->socket();
        const auto kept = std::make_shared<int>(0);
        socket->onConnect([kept] {});
        socket->connect();
        socket->emit(
            "x", {}, [kept](const auto&) {}, 1s);
        if (step > 0) {
            run();
        }
        if (step > 1) {
            shake();
        }
        if (step > 2) {
            server(R"(40{"sid":"a"})");
        }
        if (step > 3) {
            lose();
        }
        if (step > 4) {
            awaitAttempt();
        }
        manager.reset();
        socket.reset();
        system.queues->advance(10s);
        EXPECT_EQ(kept.use_count(), 1) << step;
        EXPECT_EQ(system.queues->timers(), 0U) << step;
        EXPECT_TRUE(sockets->last().released) << step;
    }

    // A namespace that was left before the server answered is left on the server too.
    start();
    const auto other = join("/other");
    socket = join();
    shake();
    socket.reset();
    takeSent();
    server(R"(40{"sid":"a"})");
    EXPECT_THAT(takeSent(), ElementsAre("41"));
}

} // namespace
} // namespace zentavo::socketio
