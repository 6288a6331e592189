// What the client and the reference server say to each other.

#include "tests/socketio/ServerFixture.h"

namespace zentavo::socketio {
namespace {

using ::testing::HasSubstr;

INSTANTIATE_TEST_SUITE_P(Ways, ServerTest, allWays, nameOf);

TEST_P(ServerTest, talks) {
    const Server server(R"({"cookie":true})");
    ManagerOptions options;
    options.query = {{"room", "a b&c"}};
    options.headers = {{"X-App", "shop"}};
    start(server.url(), options);
    const auto socket = this->socket("/", {{{"token", "t"}}, nullptr});
    std::vector<Arguments> echoes;
    socket->on("echo", [&](const Event& event) {
        echoes.push_back(event.arguments);
        story.tell("echo");
    });
    socket->on("question", [](const Event& event) {
        event.acknowledge({"because", Binary{*event.arguments.binary(0)}});
    });
    socket->on("answer", [&](const Event& event) {
        story.tell("answer " + *event.arguments[0].asString() + *event.arguments.binary(1));
    });
    socket->emit("echo", {"before", Map{{"list", List{1, 2.5, nullptr, true}}}, "ünï\x1e\u2028"}); // waits
    socket->connect();
    EXPECT_TRUE(story.comes("connect"));
    EXPECT_TRUE(story.comes("echo"));
    awaitTransport(*socket);

    const std::string bytes("\0\1\xff\x1e", 4);
    Arguments nested{"x"};
    nested.add(Map{{"k", List{nested.attach(bytes)}}}).add(Binary{""});
    socket->emit("echo", nested);
    socket->emitVolatile("silent");
    EXPECT_TRUE(story.comes("echo"));
    socket->emit("ack", {"got"}, 10s, ack());
    EXPECT_TRUE(story.comes("ack got"));
    socket->emit("ack", {Binary{bytes}}, ack());
    EXPECT_TRUE(story.comes("ack bytes " + bytes));
    socket->emit("silent", {}, 100ms, ack());
    EXPECT_TRUE(story.comes("ack late"));
    socket->emit("ask", {Binary{bytes}});
    EXPECT_TRUE(story.comes("answer because" + bytes));

    const auto seen = who(*socket);
    EXPECT_EQ(text(seen, "id"), socket->id());
    EXPECT_EQ(text(seen, "app"), "shop");
    EXPECT_EQ(text(*seen.find("query")->asMap(), "room"), "a b&c");
    EXPECT_EQ(text(*seen.find("auth")->asMap(), "token"), "t");
    if (GetParam() == Way::upgrade) {
        EXPECT_THAT(text(seen, "upgradeCookie"), HasSubstr("io="));
    }
    ASSERT_EQ(echoes.size(), 2U);
    EXPECT_EQ(echoes[0][1], Value(Map{{"list", List{1, 2.5, nullptr, true}}}));
    EXPECT_EQ(echoes[0][2], Value("ünï\x1e\u2028"));
    const std::string* inside = echoes[1].binary(echoes[1][1].asMap()->find("k")->asList()->front());
    ASSERT_NE(inside, nullptr);
    EXPECT_EQ(*inside, bytes);
    EXPECT_EQ(*echoes[1].binary(2), "");
}

TEST_P(ServerTest, joinsNamespacesAndLeavesThem) {
    const Server server;
    start(server.url());
    const auto main = socket();
    main->connect();
    EXPECT_TRUE(story.comes("connect"));
    const auto nowhere = socket("/nowhere");
    nowhere->connect();
    EXPECT_TRUE(story.comes("connect_error Invalid namespace"));
    const auto admin = socket("/admin");
    admin->connect();
    EXPECT_TRUE(story.comes("connect_error not authorizedE1"));
    admin->setAuth({{}, [](const std::function<void(Map)>& reply) { reply({{"token", "secret"}}); }});
    admin->connect();
    EXPECT_TRUE(story.comes("connect"));
    const auto seen = who(*admin);
    EXPECT_EQ(text(seen, "id"), admin->id());
    EXPECT_NE(main->id(), admin->id());
    admin->emit("leave");
    EXPECT_TRUE(story.comes("disconnect io server disconnect"));
    admin->connect();
    EXPECT_TRUE(story.comes("connect"));
    admin->disconnect();
    EXPECT_TRUE(story.comes("disconnect io client disconnect"));
    admin->setAuth({{{"token", "secret"}}, nullptr});
    for (int i = 0; i < 3; ++i) { // faster than the server can follow
        admin->connect();
        admin->disconnect();
        admin->connect();
        EXPECT_TRUE(story.comes("connect"));
        admin->disconnect();
        EXPECT_TRUE(story.comes("disconnect io client disconnect"));
    }
    EXPECT_TRUE(main->connected());
    main->emit("kick");
    EXPECT_TRUE(story.comes("disconnect io server disconnect"));
    main->connect();
    EXPECT_TRUE(story.comes("connect"));
    main->emit("drop");
    EXPECT_TRUE(story.comes("disconnect transport close"));
    EXPECT_TRUE(story.comes("connect")) << "this one comes back by itself";
}

TEST_P(ServerTest, bringsCookiesUntilTheyEnd) {
    const Server server(R"({"jar":true})");
    start(server.url());
    const auto socket = this->socket();
    socket->connect();
    for (int round = 0; round < 4; ++round) { // even, so that the URL session's jar is left empty for other tests
        const std::string wanted = round % 2 == 0 ? "" : "jar=1";
        EXPECT_TRUE(story.comes("connect"));
        awaitTransport(*socket);
        const auto seen = who(*socket);
        EXPECT_EQ(text(seen, "cookie"), wanted);
        if (GetParam() == Way::upgrade) {
            EXPECT_EQ(text(seen, "upgradeCookie"), wanted.empty() ? "jar=1" : "") << "what the handshake said last";
        }
        if (round < 3) {
            socket->emit("drop");
            EXPECT_TRUE(story.comes("disconnect"));
        }
    }
}

TEST_P(ServerTest, callsHandlersUntilTheyAreTakenAway) {
    const Server server;
    start(server.url());
    const auto socket = this->socket();
    const auto tells = [this](const char* who) {
        return [this, who](const Event& event) { story.tell(std::string(who) + " " + event.name); };
    };
    socket->emitVolatile("echo"); // nobody is there yet
    socket->onAny(tells("any"));
    socket->onAnyOutgoing(tells("out"));
    socket->once("echo", tells("once"));
    const auto first = socket->on("echo", tells("first"));
    socket->on("echo", tells("second"));
    socket->connect();
    EXPECT_TRUE(story.comes("connect"));
    awaitTransport(*socket);
    for (int round = 0; round < 3; ++round) {
        socket->emit("echo");
        socket->emit("ack", {"round"}, ack());
        EXPECT_TRUE(story.comes("ack round"));
        if (round == 0) {
            socket->off(first);
        } else {
            socket->off("echo");
        }
    }
    EXPECT_EQ(story.count("out echo"), 3);
    EXPECT_EQ(story.count("any echo"), 3);
    EXPECT_EQ(story.count("once echo"), 1);
    EXPECT_EQ(story.count("first echo"), 1);
    EXPECT_EQ(story.count("second echo"), 2);
}

TEST_P(ServerTest, dropsWhatIsVolatileWhenMuchWaits) {
    const Server server(R"({"maxHttpBufferSize":20000000})");
    start(server.url());
    const auto socket = this->socket();
    socket->onAnyOutgoing([&](const Event& event) { story.tell("out " + event.name); });
    socket->connect();
    EXPECT_TRUE(story.comes("connect"));
    awaitTransport(*socket);
    server.stopBreathing();
    socket->emit("silent", {std::string(15'000'000, 'x')}); // more than the system's buffers take
    for (int i = 0; i < 100; ++i) {
        socket->emitVolatile("count", {i});
    }
    socket->emit("ack", {"after"}, ack());
    queue->async([&] { story.tell("all emitted"); });
    EXPECT_TRUE(story.comes("all emitted"));
    EXPECT_EQ(story.count("out count"), 0);
    server.breathe();
    EXPECT_TRUE(story.comes("ack after"));
}

TEST_P(ServerTest, keepsTenThousandEventsInOrder) {
    const Server server;
    start(server.url());
    const auto socket = this->socket();
    std::int64_t next = 0;
    socket->on("n", [&](const Event& event) {
        next = event.arguments[0].exactInt64() == next ? next + 1 : -1;
        if (next == 10'000 || next <= 0) {
            story.tell("burst " + std::to_string(next));
        }
    });
    socket->connect();
    for (int i = 0; i < 10'000; ++i) {
        ASSERT_TRUE(socket->emit("count", {i}).ok()); // into polling, through the change, and after it
    }
    socket->emit("counted", {}, ack());
    EXPECT_TRUE(story.comes("ack 10000"));
    socket->emit("burst", {10'000});
    EXPECT_TRUE(story.comes("burst 10000"));
}

TEST_P(ServerTest, carriesFiveMegabytes) {
    const Server server(R"({"maxHttpBufferSize":20000000})");
    start(server.url());
    const auto socket = this->socket();
    socket->connect();
    std::string bytes(5'000'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7 + i / 255);
    }
    bool same = false;
    socket->emit("ack", {Binary{bytes}}, [&](const auto& result) {
        same = result.ok() && result->binary(0) != nullptr && *result->binary(0) == bytes;
        story.tell("back");
    });
    EXPECT_TRUE(story.comes("back"));
    EXPECT_TRUE(same);
}

} // namespace
} // namespace zentavo::socketio
