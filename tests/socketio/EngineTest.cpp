// The engine between a scripted server and a turned clock.

#include "zentavo/socketio/Engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/MemoryPlatform.h"
#include "tests/socketio/ScriptedWebSockets.h"

namespace zentavo::socketio {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using zentavo::testing::MemoryPlatform;
using zentavo::testing::ScriptedAnswer;

constexpr auto hello =
    R"(0{"sid":"S1","upgrades":["websocket"],"pingInterval":25000,"pingTimeout":20000,"maxPayload":30})";

struct Owner final : EngineOwner {
    void onEngineOpen() override { told.emplace_back("open"); }
    void onEngineMessage(std::string_view content, bool binary) override {
        told.push_back((binary ? "b:" : "") + std::string(content));
        if (onMessage) {
            onMessage();
        }
    }
    void onEngineEnd(const Disconnection& how) override {
        told.push_back(std::string(text(how.reason)) + "|" + how.detail);
    }
    std::vector<std::string> take() { return std::exchange(told, {}); }

    std::vector<std::string> told;
    std::function<void()> onMessage;
};

class EngineTest : public ::testing::Test {
protected:
    EngineTest() { system.session->hold(); }

    void start(EngineOptions options, const char* url = "http://chat.example:8080/?room=7") {
        const auto address = EngineAddress::make(*URL::parse(url), options);
        ASSERT_TRUE(address.ok()) << address.error().message;
        const Services services{queue, system.clock, system.random, system.session, sockets};
        engine = std::make_shared<Engine>(*address, options, services, cookies, owner);
        engine->open();
    }
    /// Answers request `index` and lets its completion run.
    void answer(std::size_t index, std::string body, int status = 200, std::vector<platform::Header> headers = {}) {
        ASSERT_TRUE(system.session->answer(index, {status, std::move(body), std::move(headers)}));
        system.queues->runUntilIdle();
    }
    /// "GET", or "POST body".
    std::string asked(std::size_t index) const {
        const auto requests = system.session->requests();
        if (index >= requests.size()) {
            return "nothing";
        }
        const auto& request = *requests[index];
        return request.method + (request.body ? " " + *request.body : "");
    }
    void send(std::string text) { engine->send({{std::move(text), false}}); }

    static EngineOptions only(TransportKind kind) {
        EngineOptions options;
        options.transports = {kind};
        return options;
    }

    MemoryPlatform system;
    const std::shared_ptr<platform::DispatchQueue> queue = system.queues->make("socketio", platform::QueueKind::serial);
    const std::shared_ptr<test::ScriptedWebSockets> sockets = std::make_shared<test::ScriptedWebSockets>();
    const std::shared_ptr<CookieJar> cookies = std::make_shared<CookieJar>();
    const std::shared_ptr<Owner> owner = std::make_shared<Owner>();
    std::shared_ptr<Engine> engine;
};

TEST_F(EngineTest, pollsWithOneGetAndOnePostAtATime) {
    auto options = only(TransportKind::polling);
    options.query = {{"token", "a b"}};
    options.headers = {{"X-App", "1"}};
    start(options);
    const auto first = system.session->requests()[0];
    EXPECT_THAT(first->url.text(), HasSubstr("http://chat.example:8080/socket.io/?room=7&token=a%20b&EIO=4&transport="
                                             "polling&t="));
    EXPECT_EQ(first->headers.begin()->first, "X-App");
    EXPECT_EQ(first->idleTimeout, 20s);
    answer(0, hello);
    EXPECT_THAT(owner->take(), ElementsAre("open"));
    const auto poll = system.session->requests()[1];
    EXPECT_THAT(poll->url.text(), EndsWith("&sid=S1"));
    EXPECT_GT(poll->idleTimeout, 45s) << "a server may be silent for as long as its pings allow";

    EXPECT_TRUE(engine->writable());
    send("4one");
    EXPECT_FALSE(engine->writable());
    send("4two");
    auto held = std::make_shared<int>();
    const auto released = [memory = std::weak_ptr(held)] { return memory.expired(); };
    engine->send({{std::string("\1\2\3", 3), true, std::move(held)}});
    send("4four, which is too long for the others");
    EXPECT_EQ(asked(2), "POST 4one");
    EXPECT_EQ(system.session->count(), 3U);
    answer(2, "ok");
    EXPECT_EQ(asked(3), "POST 4two\x1e"
                        "bAQID");
    EXPECT_FALSE(released()) << "its body is still there";
    answer(3, "ok");
    EXPECT_TRUE(released());
    EXPECT_EQ(asked(4), "POST 4four, which is too long for the others") << "alone, beyond the server's limit";
    answer(4, "ok");

    answer(1, "4a\x1e"
              "bBA==\x1e"
              "2\x1e"
              "6");
    EXPECT_THAT(owner->take(), ElementsAre("a", "b:\4"));
    EXPECT_EQ(asked(5), "POST 3") << "the pong";
    EXPECT_EQ(asked(6), "GET");
    EXPECT_TRUE(sockets->connections.empty());
    EXPECT_EQ(system.session->open(), 2U);
}

TEST_F(EngineTest, endsWhenAnExchangeFails) {
    for (const auto& [body, status, said] :
         {std::tuple{R"({"code":1,"message":"Session ID unknown"})", 400, "status 400"}, std::tuple{"", 200, "poll"},
          std::tuple{"9what", 200, "begins like that"}, std::tuple{hello, 200, "twice"},
          std::tuple{"1", 200, "close"}}) {
        start(only(TransportKind::polling));
        const auto index = system.session->count() - 1;
        answer(index, hello);
        owner->take();
        answer(index + 1, body, status);
        EXPECT_THAT(owner->take(), ElementsAre(HasSubstr(said)));
        EXPECT_EQ(system.session->open(), 0U);
        EXPECT_EQ(system.queues->timers(), 0U);
    }
    start(only(TransportKind::polling));
    const auto index = system.session->count() - 1;
    answer(index, "2");
    EXPECT_THAT(owner->take(), ElementsAre(HasSubstr("without a handshake")));

    start(only(TransportKind::polling));
    system.queues->advance(20s);
    EXPECT_THAT(owner->take(), ElementsAre(HasSubstr("in time")));
    EXPECT_EQ(system.session->open(), 0U) << "what hangs is cancelled";
}

TEST_F(EngineTest, speaksOverWebSocketFromTheStart) {
    auto options = only(TransportKind::webSocket);
    options.limits.maximumMessage = 777;
    start(options, "wss://chat.example");
    auto& socket = sockets->last();
    EXPECT_EQ(socket.request.url, "wss://chat.example/socket.io/?EIO=4&transport=websocket");
    EXPECT_EQ(socket.request.maximumMessage, 777U);
    socket.open();
    socket.say(hello);
    socket.say("2");
    socket.say("4text");
    socket.sayBinary("\1");
    EXPECT_THAT(owner->take(), ElementsAre("open", "text", "b:\1"));
    socket.full = true;
    engine->send({{"4x", false}, {"bin", true}});
    EXPECT_FALSE(engine->writable());
    EXPECT_THAT(socket.takeSent(), ElementsAre("3"));
    for (int i = 0; i < 100; ++i) {
        socket.say("2flood");
    }
    socket.drain();
    EXPECT_THAT(socket.takeSent(), ElementsAre("4x", "b:bin", "3"));
    EXPECT_TRUE(engine->writable());
    socket.close(1009, "too big");
    EXPECT_THAT(owner->take(), ElementsAre("transport close|WebSocket code 1009: too big"));
    EXPECT_EQ(system.session->count(), 0U);

    start(options);
    sockets->last().close(1006, "connecting: refused");
    EXPECT_THAT(owner->take(), ElementsAre(HasSubstr("transport error|")));
    start(options);
    sockets->last().open();
    sockets->last().say("garbage");
    EXPECT_THAT(owner->take(), ElementsAre(HasSubstr("transport error|")));
    EXPECT_TRUE(sockets->last().released);
}

TEST_F(EngineTest, goesOverToWebSocketWithoutLosingOrder) {
    start({});
    answer(0, hello, 200, {{"Set-Cookie", "io=S1; Path=/"}});
    auto& socket = sockets->last();
    EXPECT_THAT(socket.request.url, EndsWith("/socket.io/?room=7&EIO=4&transport=websocket&sid=S1"));
    EXPECT_EQ(*socket.request.headers.begin(), platform::Header("Cookie", "io=S1"));
    send("4one");
    socket.open();
    EXPECT_THAT(socket.takeSent(), ElementsAre("2probe"));
    socket.say("3probe");
    send("4two");
    EXPECT_FALSE(engine->writable());
    EXPECT_THAT(socket.takeSent(), IsEmpty()) << "polling is still under way";
    answer(2, "ok");
    answer(1, "4last by polling\x1e"
              "6");
    EXPECT_THAT(socket.takeSent(), ElementsAre("5", "4two"));
    socket.say("4first by websocket");
    send("4three");
    EXPECT_THAT(socket.takeSent(), ElementsAre("4three"));
    EXPECT_THAT(owner->take(), ElementsAre("open", "last by polling", "first by websocket"));
    EXPECT_EQ(system.session->open(), 0U);
}

TEST_F(EngineTest, staysWithPollingWhenTheChangeFails) {
    start({});
    answer(0, hello);
    sockets->last().close(1006, "", 503);
    send("4one");
    EXPECT_EQ(asked(2), "POST 4one");

    // The server answers the probe and then leaves the poll open for ever.
    engine->close();
    start({});
    const auto index = system.session->count() - 1;
    answer(index, hello);
    sockets->last().open();
    sockets->last().say("3probe");
    send("4waits");
    system.queues->advance(10s);
    EXPECT_TRUE(sockets->last().released);
    EXPECT_EQ(asked(index + 2), "POST 4waits");
    answer(index + 1, "4still here");
    EXPECT_EQ(asked(index + 3), "GET");
    EXPECT_EQ(owner->take().back(), "still here");

    // A pong that answers no probe changes nothing.
    start({});
    answer(system.session->count() - 1, hello);
    sockets->last().open();
    sockets->last().say("3");
    EXPECT_TRUE(engine->writable());
}

TEST_F(EngineTest, triesTheNextTransportWhereItIsToldTo) {
    EngineOptions options;
    options.transports = {TransportKind::webSocket, TransportKind::polling};
    start(options);
    sockets->last().close(0, "refused", 400);
    EXPECT_THAT(owner->take(), ElementsAre(HasSubstr("400"))) << "not by itself";
    EXPECT_EQ(system.session->count(), 0U);

    options.tryAllTransports = true;
    start(options);
    system.queues->advance(20s);
    EXPECT_TRUE(sockets->last().released);
    EXPECT_THAT(owner->take(), IsEmpty());
    answer(0, hello);
    EXPECT_THAT(owner->take(), ElementsAre("open"));
    EXPECT_EQ(sockets->connections.size(), 2U) << "what failed is not gone over to";
    answer(1, "1");
    EXPECT_THAT(owner->take(), ElementsAre(HasSubstr("closed the connection"))) << "once it was open that is the end";

    options.transports = {TransportKind::polling, TransportKind::webSocket};
    start(options);
    answer(2, "no server", 502);
    EXPECT_THAT(owner->take(), IsEmpty());
    sockets->last().open();
    sockets->last().close(1006);
    EXPECT_THAT(owner->take(), ElementsAre(HasSubstr("1006"))) << "the last one's";
    EXPECT_EQ(system.queues->timers(), 0U);
}

TEST_F(EngineTest, givesUpAServerThatIsSilent) {
    start(only(TransportKind::webSocket));
    auto& socket = sockets->last();
    socket.open();
    socket.say(hello);
    system.queues->advance(44s);
    socket.say("4any packet counts");
    system.queues->advance(44s);
    EXPECT_TRUE(engine->isOpen());
    system.queues->advance(1s);
    EXPECT_THAT(owner->take(), ElementsAre("open", "any packet counts", "ping timeout|"));
    EXPECT_TRUE(socket.released);

    start(only(TransportKind::webSocket));
    sockets->last().open();
    sockets->last().say(hello);
    owner->take();
    system.clock->advance(1h); // the machine slept: no timer has run
    EXPECT_FALSE(engine->alive());
    EXPECT_THAT(owner->take(), ElementsAre("ping timeout|"));
}

TEST_F(EngineTest, letsWhatWasSentLeaveBeforeItCloses) {
    start(only(TransportKind::polling));
    answer(0, hello);
    send("4one");
    send("41");
    engine->close();
    engine.reset();
    answer(2, "ok");
    EXPECT_EQ(asked(3), "POST 41\x1e"
                        "1");
    answer(3, "ok");
    EXPECT_EQ(system.session->open(), 0U) << "the poll is cancelled";
    EXPECT_EQ(system.queues->timers(), 0U);

    start(only(TransportKind::webSocket));
    auto& socket = sockets->last();
    socket.open();
    socket.say(hello);
    socket.full = true;
    send("41");
    engine->close();
    engine.reset();
    EXPECT_FALSE(socket.released);
    socket.drain();
    EXPECT_TRUE(socket.released);
    EXPECT_THAT(socket.sent, ElementsAre("41"));

    start(only(TransportKind::polling));
    const auto index = system.session->count() - 1;
    answer(index, hello);
    send("4never answered");
    engine->close();
    engine.reset();
    system.queues->advance(5s);
    EXPECT_EQ(system.session->open(), 0U);
    EXPECT_THAT(owner->take(), ElementsAre("open", "open", "open")) << "a closed engine tells nothing";
}

TEST_F(EngineTest, mayBeReleasedInsideItsOwnCalls) {
    for (const auto kind : {TransportKind::webSocket, TransportKind::polling}) {
        start(only(kind));
        owner->onMessage = [this] { engine.reset(); };
        owner->take();
        if (kind == TransportKind::webSocket) {
            sockets->last().open();
            sockets->last().say(hello);
            sockets->last().say("4bye");
            sockets->last().say("4nobody hears");
        } else {
            const auto index = system.session->count() - 1;
            answer(index, hello);
            answer(index + 1, "4bye\x1e"
                              "4nobody hears");
        }
        EXPECT_EQ(owner->told[1], "bye");
        system.queues->runUntilIdle();
        EXPECT_EQ(system.queues->timers(), 0U);
        EXPECT_EQ(system.session->open(), 0U);
    }
}

TEST(EngineAddresses, areThoseOfServers) {
    const auto at = [](const char* url, const char* path = "/socket.io/") {
        EngineOptions options;
        options.path = path;
        const auto address = EngineAddress::make(*URL::parse(url), options);
        return address ? address->webSocket("") : "error";
    };
    EXPECT_EQ(at("https://[::1]:7/", "chat"), "wss://[::1]:7/chat/?EIO=4&transport=websocket");
    for (const char* bad : {"ftp://a", "a/b", "http://a/chat", "http://a#x", "http://u:p@a", "mailto:x@y"}) {
        EXPECT_EQ(at(bad), "error") << bad;
    }
    EXPECT_EQ(at("http://a", "/x?y"), "error");
}

} // namespace
} // namespace zentavo::socketio
