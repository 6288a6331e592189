// The client and the reference server, over loopback: by polling, by WebSocket, and from one to the other.

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/linux/LinuxPlatform.h"
#include "tests/e2e/Process.h"
#include "zentavo/socketio/SocketManager.h"

namespace zentavo::socketio {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

class Server {
public:
    explicit Server(const std::string& options = "{}", const std::string& port = "0")
        : process_({"/usr/bin/env", "node", ZENTAVO_SOCKETIO_SERVER, ZENTAVO_SOCKETIO_MODULES, port, options}) {
        const std::string line = process_.readLine(20s);
        port_ = line.starts_with("listening ") ? line.substr(10) : "";
        EXPECT_FALSE(port_.empty()) << line;
    }
    const std::string& port() const { return port_; }
    std::string url() const { return "http://127.0.0.1:" + port_; }
    void stopBreathing() const { process_.kill(SIGSTOP); }
    void breathe() const { process_.kill(SIGCONT); }
    void die() {
        process_.kill(SIGKILL);
        process_.wait();
    }

private:
    e2e::Process process_;
    std::string port_;
};

/// What handlers have told, and a way to wait for it.
class Story {
public:
    void tell(std::string what) {
        const std::lock_guard lock(mutex_);
        told_.push_back(std::move(what));
        changed_.notify_all();
    }
    /// Whether `what` is told, from where the last wait ended on; what was told before it is passed over.
    ::testing::AssertionResult comes(const std::string& what) {
        std::unique_lock lock(mutex_);
        std::string before;
        const bool came = changed_.wait_for(lock, 20s, [&] {
            while (next_ < told_.size()) {
                const auto& one = told_[next_++];
                if (one.find(what) != std::string::npos) {
                    return true;
                }
                before += one.substr(0, 200) + "\n";
            }
            return false;
        });
        return came ? ::testing::AssertionSuccess()
                    : ::testing::AssertionFailure() << what << " never came, but\n"
                                                    << before;
    }

    /// How often `what` has been told so far.
    std::ptrdiff_t count(const std::string& what) {
        const std::lock_guard lock(mutex_);
        return std::count_if(told_.begin(), told_.end(),
                             [&](const auto& one) { return one.find(what) != std::string::npos; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> told_;
    std::size_t next_ = 0;
};

enum class Way { polling, webSocket, upgrade };

class ServerTest : public ::testing::TestWithParam<Way> {
protected:
    ~ServerTest() override {
        manager.reset();
        // What the queue was told before has run when this has.
        queue->async([this] { story.tell("all done"); });
        EXPECT_TRUE(story.comes("all done"));
    }

    void start(const std::string& url, ManagerOptions options = {}) {
        options.transports = GetParam() == Way::polling     ? std::vector{TransportKind::polling}
                             : GetParam() == Way::webSocket ? std::vector{TransportKind::webSocket}
                                                            : options.transports;
        options.backoff = {50ms, 200ms, 0.5};
        auto made = SocketManager::make(url, options, {queue, platform->clock, platform->random, platform->urlSession});
        ASSERT_TRUE(made.ok()) << made.error().message;
        manager = *made;
    }
    std::shared_ptr<SocketIOClient> socket(const char* name = "/", Auth auth = {}) {
        auto socket = *manager->socket(name, std::move(auth));
        socket->onConnect([this] { story.tell("connect"); });
        socket->onDisconnect([this](const Disconnection& how) {
            story.tell("disconnect " + std::string(text(how.reason)) + " " + how.detail);
        });
        socket->onConnectError([this](const ConnectError& error) {
            story.tell("connect_error " + error.message +
                       (error.data.asMap() ? text(*error.data.asMap(), "code") : ""));
        });
        return socket;
    }
    AckHandler ack() {
        return [this](const Result<Arguments, AckFailure>& result) {
            story.tell(!result.ok()              ? result.error() == AckFailure::timedOut ? "ack late" : "ack lost"
                       : result->empty()         ? "ack nothing"
                       : result->binary(0)       ? "ack bytes " + *result->binary(0)
                       : (*result)[0].asString() ? "ack " + *(*result)[0].asString()
                                                 : "ack other");
        };
    }
    /// What the server sees of this end.
    Map who(SocketIOClient& socket) {
        const auto seen = std::make_shared<Map>();
        socket.emit("who", {}, [this, seen](const auto& result) {
            if (result.ok() && (*result)[0].asMap() != nullptr) {
                *seen = *(*result)[0].asMap();
            }
            story.tell("seen");
        });
        EXPECT_TRUE(story.comes("seen"));
        return *seen;
    }
    static std::string text(const Map& map, std::string_view key) {
        const auto* value = map.find(key);
        return value != nullptr && value->asString() != nullptr ? *value->asString() : "(none)";
    }
    static const char* text(DisconnectReason reason) { return socketio::text(reason); }
    /// In the upgrade mode: until the server sees the WebSocket.
    void awaitTransport(SocketIOClient& socket) {
        const std::string wanted = GetParam() == Way::polling ? "polling" : "websocket";
        std::string seen;
        for (int i = 0; i < 1000 && seen != wanted; ++i) {
            seen = text(who(socket), "transport");
        }
        EXPECT_EQ(seen, wanted);
    }

    const std::shared_ptr<platform::Platform> platform = linux_port::makeLinuxPlatform();
    const std::shared_ptr<platform::DispatchQueue> queue =
        platform->queues->make("socketio", platform::QueueKind::serial);
    Story story;
    std::shared_ptr<SocketManager> manager;
};

INSTANTIATE_TEST_SUITE_P(Ways, ServerTest, ::testing::Values(Way::polling, Way::webSocket, Way::upgrade),
                         [](const auto& way) {
                             return way.param == Way::polling     ? "polling"
                                    : way.param == Way::webSocket ? "websocket"
                                                                  : "upgrade";
                         });

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

TEST_P(ServerTest, isToldThatAPacketWasTooLarge) {
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

TEST_P(ServerTest, comesBackAfterARestart) {
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

TEST_P(ServerTest, recoversWhatItMissed) {
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

TEST_P(ServerTest, noticesAServerThatVanishes) {
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

TEST_P(ServerTest, endsConnectionsThatBringGarbage) {
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

TEST_P(ServerTest, letsGoOnAnyThreadAtAnyMoment) {
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
                guest->emit(
                    "echo", {i, Binary{"x"}}, [&](const auto&) { ++events; }, 50ms);
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
