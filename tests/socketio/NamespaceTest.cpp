// Namespaces: joining, leaving, and letting go of them.

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/socketio/ManagerFixture.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::socketio {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

class NamespaceTest : public test::ManagerFixture {};

TEST_F(NamespaceTest, joinsSeveralNamespacesOverOneConnection) {
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

TEST_F(NamespaceTest, doesNotWaitForEverToBeJoined) {
    ManagerOptions options;
    options.connectTimeout = 3s;
    setFaultPolicy(FaultPolicy::contain);
    start(options);
    const auto main = join();
    const auto other = join("/other");
    std::function<void(Map)> late;
    const auto asking = join("/asking", {{}, [&](std::function<void(Map)> reply) { late = std::move(reply); }});
    const auto throwing = join("/throwing", {{}, [](const auto&) { throw std::runtime_error("no token"); }});
    shake();
    setFaultPolicy(FaultPolicy::stop);
    server(R"(40{"sid":"a"})");
    takeTold();
    takeSent();
    system.queues->advance(3s);
    EXPECT_THAT(takeTold(), ElementsAre("/asking refused the namespace was not joined in time",
                                        "/other refused the namespace was not joined in time",
                                        "/throwing refused the namespace was not joined in time"));
    late({});
    EXPECT_THAT(takeSent(), ElementsAre());
    server(R"(40/other,{"sid":"b"})");
    EXPECT_THAT(takeSent(), ElementsAre("41/other,")) << "too late";
    EXPECT_TRUE(main->connected());

    other->connect();
    system.queues->advance(1s);
    EXPECT_THAT(takeSent(), ElementsAre("40/other,"));
    server(R"(40/other,{"sid":"b"})");
    system.queues->advance(3s);
    EXPECT_TRUE(other->connected());
}

// A server that is asked a second time before it has answered, or has seen the namespace left, ends the connection.
TEST_F(NamespaceTest, asksAnewOnlyWhenTheServerIsReady) {
    start();
    const auto main = join();
    const auto other = join("/other");
    shake();
    server(R"(40{"sid":"a"})");
    other->disconnect();
    takeSent();
    other->setAuth({{{"token", "new"}}, nullptr});
    other->connect();
    EXPECT_THAT(takeSent(), ElementsAre());
    server(R"(40/other,{"sid":"old"})");
    EXPECT_THAT(takeSent(), ElementsAre("41/other,"));
    server(R"(40/other,{"sid":"nonsense"})");
    sockets->last().queued = 1'000'000;
    system.queues->advance(1s);
    EXPECT_THAT(takeSent(), ElementsAre()) << "it may not even have left";
    sockets->last().queued = 0;
    system.queues->advance(1s);
    EXPECT_THAT(takeSent(), ElementsAre(R"(40/other,{"token":"new"})"));
    server(R"(40/other,{"sid":"new"})");
    EXPECT_EQ(other->id(), "new");
    EXPECT_THAT(takeTold(), ElementsAre("connect", "/other connect"));
    other->disconnect();
    other->connect();
    EXPECT_THAT(takeSent(), ElementsAre("41/other,"));
    sockets->last().queued = 1'000'000;
    system.queues->advance(5s);
    EXPECT_THAT(takeSent(), ElementsAre(R"(40/other,{"token":"new"})")) << "though it is busy all the time";
    sockets->last().queued = 0;
    takeTold();

    // A refusal of what nobody wants any more, and one change of mind more than there are answers.
    const auto third = join("/third");
    third->disconnect();
    third->connect();
    server(R"(44/third,{"message":"no"})");
    EXPECT_THAT(takeSent(), ElementsAre("40/third,", "40/third,"));
    third->disconnect();
    third->connect();
    run();
    third->disconnect();
    server(R"(40/third,{"sid":"old"})");
    system.queues->advance(1s);
    EXPECT_THAT(takeSent(), ElementsAre("41/third,"));
    EXPECT_THAT(takeTold(), ElementsAre());

    // With another connection all begins anew.
    third->connect();
    third->disconnect();
    lose();
    third->connect();
    awaitAttempt();
    shake();
    EXPECT_THAT(takeSent(), ElementsAre("40", R"(40/other,{"token":"new"})", "40/third,"));
}

TEST_F(NamespaceTest, refusesWhatCannotBe) {
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

TEST_F(NamespaceTest, maySeeItsSocketsGoAtAnyMoment) {
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
        socket->emit("x", {}, 1s, [kept](const auto&) {});
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
