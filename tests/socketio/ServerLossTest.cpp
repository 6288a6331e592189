// How connections with the reference server are lost, and what becomes of them.

#include <atomic>
#include <thread>

#include "tests/socketio/ServerFixture.h"

namespace zentavo::socketio {
namespace {

class ServerLossTest : public ServerTest {};
INSTANTIATE_TEST_SUITE_P(Ways, ServerLossTest, allWays, nameOf);

TEST_P(ServerLossTest, isToldThatAPacketWasTooLarge) {
    const Server server(R"({"maxHttpBufferSize":10000})");
    start(server.url());
    const auto socket = this->socket();
    socket->connect();
    EXPECT_TRUE(story.comes("connect"));
    awaitTransport(*socket);
    socket->emit("ack", {std::string(50'000, 'x')}, ack());
    EXPECT_TRUE(story.comes("ack lost"));
    EXPECT_TRUE(story.comes(GetParam() == Way::polling
                                ? "disconnect transport error the post was answered with status 413"
                                : "disconnect transport close WebSocket code 1009"));
    EXPECT_TRUE(story.comes("connect"));
}

TEST_P(ServerLossTest, comesBackAfterARestart) {
    Server server;
    start(server.url());
    int asked = 0;
    const auto main = socket();
    const auto admin = socket("/admin", {{}, [&](const std::function<void(Map)>& reply) {
                                             ++asked;
                                             reply({{"token", "secret"}});
                                         }});
    main->connect();
    admin->connect();
    EXPECT_TRUE(story.comes("connect"));
    EXPECT_TRUE(story.comes("connect"));
    awaitTransport(*main);
    server.die();
    EXPECT_TRUE(story.comes("disconnect transport"));
    EXPECT_TRUE(story.comes("connect_error transport error")) << "nobody listens";
    main->emit("ack", {"kept"}, ack());
    const Server again("{}", server.port());
    EXPECT_TRUE(story.comes("ack kept"));
    const std::string id = text(who(*admin), "id"); // the answer comes over the new connection
    EXPECT_EQ(id, admin->id());
    EXPECT_EQ(asked, 2);
}

TEST_P(ServerLossTest, recoversWhatItMissed) {
    const Server server(R"({"connectionStateRecovery":{}})");
    start(server.url());
    const auto socket = this->socket();
    socket->on("echo", [&](const Event&) { story.tell("echo"); });
    socket->on("missed", [&](const Event& event) {
        story.tell("missed " + std::to_string(event.arguments[0].exactInt64().value_or(-1)) +
                   *event.arguments.binary(1) + (socket->recovered() ? " recovered" : ""));
    });
    socket->connect();
    socket->emit("echo"); // only who has received something can be told what came after it
    EXPECT_TRUE(story.comes("echo"));
    awaitTransport(*socket);
    for (int round = 0; round < 2; ++round) {
        socket->emit("away", {2});
        EXPECT_TRUE(story.comes("disconnect"));
        EXPECT_TRUE(story.comes("missed 0b recovered")) << round;
        EXPECT_TRUE(story.comes("missed 1b recovered"));
        EXPECT_TRUE(story.comes("connect")) << "after what was missed";
        awaitTransport(*socket);
    }
    EXPECT_EQ(story.count("missed"), 4) << "each once";
}

TEST_P(ServerLossTest, noticesAServerThatVanishes) {
    const Server server(R"({"pingInterval":300,"pingTimeout":200})");
    start(server.url());
    const auto socket = this->socket();
    socket->connect();
    EXPECT_TRUE(story.comes("connect"));
    awaitTransport(*socket);
    server.stopBreathing();
    EXPECT_TRUE(story.comes("disconnect ping timeout"));
    server.breathe();
    EXPECT_TRUE(story.comes("connect"));
    socket->emit("ack", {"alive"}, ack());
    EXPECT_TRUE(story.comes("ack alive"));
}

TEST_P(ServerLossTest, endsConnectionsThatBringGarbage) {
    const Server server;
    start(server.url());
    const auto socket = this->socket();
    socket->connect();
    EXPECT_TRUE(story.comes("connect"));
    for (const char* garbage : {"zzz", "2[\"e\"", "2{}", "512-[\"e\"]", "0[]"}) {
        socket->emit("garbage", {garbage});
        EXPECT_TRUE(story.comes("disconnect parse error")) << garbage;
        EXPECT_TRUE(story.comes("connect"));
    }
}

TEST_P(ServerLossTest, letsGoOnAnyThreadAtAnyMoment) {
    const Server server;
    std::atomic<int> events = 0;
    for (int round = 0; round < 12; ++round) {
        start(server.url());
        // Each thread has a namespace of its own and leaves when it has said so many things, connected or not.
        const auto visit = [&](const char* name, int count) {
            const auto guest = *manager->socket(name, {{{"token", "secret"}}, nullptr});
            guest->connect();
            for (int i = 0; i < count; ++i) {
                const auto handler = guest->on("echo", [&](const Event&) { ++events; });
                guest->emit("echo", {i, Binary{"x"}}, 50ms, [&](const auto&) { ++events; });
                if (i % 3 == 0) {
                    guest->off(handler);
                }
            }
        };
        std::thread first(visit, "/", round * 20);
        std::thread second(visit, "/admin", 240 - round * 20);
        manager->disconnect();
        first.join();
        second.join();
        manager.reset();
    }
    start(server.url());
    const auto last = socket();
    last->connect();
    last->emit("ack", {"still fine"}, ack());
    EXPECT_TRUE(story.comes("ack still fine"));
}

} // namespace
} // namespace zentavo::socketio
