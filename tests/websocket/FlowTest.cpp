// Time and back-pressure: who waits for whom, how long, and on which thread it is told.

#include <algorithm>
#include <atomic>

#include <asio/post.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/websocket/Client.h"
#include "tests/websocket/Wire.h"
#include "zentavo/websocket/Deflate.h"
#include "zentavo/websocket/Delivery.h"
#include "zentavo/websocket/FrameWriter.h"
#include "zentavo/websocket/Link.h"

namespace zentavo::websocket::test {
namespace {

std::thread::id threadOf(ThreadQueue& queue) {
    std::promise<std::thread::id> id;
    queue.async([&] { id.set_value(std::this_thread::get_id()); });
    return id.get_future().get();
}

TEST(Queue, everyHandlerRunsOnTheQueueThatTheHostNamed) {
    const auto ours = std::make_shared<ThreadQueue>();
    const auto theirs = std::make_shared<ThreadQueue>();
    const auto client = threadOf(*ours);
    const auto server = threadOf(*theirs);
    std::atomic<int> strayed = 0;
    const auto expectOn = [&](std::thread::id where) { strayed += std::this_thread::get_id() == where ? 0 : 1; };
    Story served;
    ServerHandlers handlers;
    handlers.onRequest = [&](const ServerRequest&) {
        expectOn(server);
        return Verdict();
    };
    handlers.onOpen = [&](const auto&) { expectOn(server); };
    handlers.onMessage = [&](const auto& connection, MessageKind kind, std::string_view content) {
        expectOn(server);
        connection->send(kind, content);
    };
    handlers.onClose = [&](const auto&, const Closed&) {
        expectOn(server);
        served.tell([&] { ++served.closes; });
    };
    WebSocketServer listener(handlers, {}, theirs);
    const auto port = listener.listen("127.0.0.1", 0);
    Story story;
    const ClientHandlers told = story.handlers();
    WebSocketClient one({[&](const Handshake& agreed) {
                             expectOn(client);
                             told.onOpen(agreed);
                         },
                         [&](MessageKind kind, std::string_view content) {
                             expectOn(client);
                             told.onMessage(kind, content);
                         },
                         nullptr,
                         [&](const Closed& how, int status) {
                             expectOn(client);
                             told.onClose(how, status);
                         }},
                        ours);
    ASSERT_TRUE(one.open(urlOf(*port)).ok());
    ASSERT_TRUE(story.await([&] { return story.opened; }));
    one.sendText("x");
    ASSERT_TRUE(story.awaitMessages(1));
    one.close();
    ASSERT_TRUE(story.awaitClosed());
    ASSERT_TRUE(served.awaitClosed());
    EXPECT_EQ(strayed, 0);
}

// What a host has not handled yet is bounded: the rest stays in the network, and comes when the host goes on.
TEST(Queue, aHostThatIsBehindHoldsUpItsPeerAndMissesNothing) {
    constexpr std::size_t count = 1024;
    const std::string frame = std::string("\x82\x7F\0\0\0\0\0\x01\0\0", 10) + std::string(65536, 'x');
    const Door door;
    const auto queue = std::make_shared<ThreadQueue>();
    std::atomic<std::size_t> received = 0;
    Story story;
    ClientHandlers handlers = story.handlers();
    handlers.onMessage = [&](MessageKind, std::string_view content) {
        story.tell([&] { received += content.size(); });
    };
    WebSocketClient client(handlers, queue);
    ASSERT_TRUE(client.open(urlOf(door.port())).ok());
    const Wire wire = door.accept();
    wire.send(upgradeAnswer(wire.receiveHead()));
    ASSERT_TRUE(story.await([&] { return story.opened; }));
    std::promise<void> goOn;
    queue->async([&] { goOn.get_future().wait(); });
    std::atomic<bool> sent = false;
    std::thread sender([&] {
        for (std::size_t i = 0; i < count; ++i) {
            wire.send(frame);
        }
        sent = true;
    });
    // 64 MiB are far more than the two ends of a connection hold; a reader without a bound has taken them by now.
    std::this_thread::sleep_for(150ms);
    EXPECT_FALSE(sent);
    EXPECT_EQ(received, 0U);
    goOn.set_value();
    EXPECT_TRUE(story.await([&] { return received == count * 65536; })) << received;
    sender.join();
}

TEST(Queue, aHostThatIsBehindStillHearsTheAnswerToItsGoodbye) {
    ClientOptions options;
    options.closeTimeout = 2s;
    const Door door;
    const auto queue = std::make_shared<ThreadQueue>();
    Story story;
    WebSocketClient client(story.handlers(), queue);
    ASSERT_TRUE(client.open(urlOf(door.port()), options).ok());
    const Wire wire = door.accept();
    wire.send(upgradeAnswer(wire.receiveHead()));
    ASSERT_TRUE(story.await([&] { return story.opened; }));
    std::promise<void> goOn;
    queue->async([&] { goOn.get_future().wait(); });
    wire.send(std::string("\x02\x7F\0\0\0\0\0\x20\0\0", 10) + std::string(2097152, 'x'));
    wire.send(std::string("\x89\0\x80\0", 4));
    ASSERT_TRUE(wire.receive().starts_with("\x8A")) << "the end of the message has come too";
    client.close();
    ASSERT_TRUE(wire.receive().starts_with("\x88"));
    wire.send(std::string("\x88\0", 2));
    wire.endSending();
    EXPECT_EQ(wire.receiveAll(), "");
    goOn.set_value();
    ASSERT_TRUE(story.awaitClosed());
    EXPECT_TRUE(story.closed.clean) << story.closed.reason;
}

// A few bytes that expand to a megabyte each, many in one read: the host gets them one by one.
TEST(Queue, whatExpandsFarHoldsUpItsPeerToo) {
    constexpr std::size_t count = 100;
    struct Counts {
        std::atomic<int> inBlock = 0;
        std::atomic<int> most = 0;
    };
    struct CountingQueue final : platform::DispatchQueue {
        void async(platform::Block block) override {
            queue.async([counts = counts, block = std::move(block)] {
                counts->inBlock = 0;
                block();
                counts->most = std::max(counts->most.load(), counts->inBlock.load());
            });
        }
        platform::TimerId after(std::chrono::nanoseconds, platform::Block) override { return 0; }
        bool cancel(platform::TimerId) override { return false; }
        const std::shared_ptr<Counts> counts = std::make_shared<Counts>();
        ThreadQueue queue;
    };
    const auto queue = std::make_shared<CountingQueue>();
    const std::string big(std::size_t{1} << 20U, 'x');
    Deflater deflater(15, false, 6);
    std::string frames;
    for (std::size_t i = 0; i < count; ++i) {
        appendFrame(frames, {true, true, Opcode::binary, 0}, deflater.compress(big), std::nullopt);
    }
    ASSERT_LT(frames.size(), 200'000U);
    ClientOptions options;
    options.compression.emplace();
    const Door door;
    Story story;
    ClientHandlers handlers = story.handlers();
    std::size_t received = 0;
    handlers.onMessage = [&](MessageKind, std::string_view content) {
        ++queue->counts->inBlock;
        story.tell([&] { received += content.size(); });
    };
    WebSocketClient client(handlers, queue);
    ASSERT_TRUE(client.open(urlOf(door.port()), options).ok());
    const Wire wire = door.accept();
    wire.send(upgradeAnswer(wire.receiveHead(),
                            "Sec-WebSocket-Extensions: permessage-deflate; server_no_context_takeover\r\n"));
    wire.send(frames);
    EXPECT_TRUE(story.await([&] { return received == count * big.size(); })) << received;
    EXPECT_LE(queue->counts->most, 2);
}

// Runs what it was given when the test says so.
class HeldQueue final : public platform::DispatchQueue {
public:
    void async(platform::Block block) override { blocks.push_back(std::move(block)); }
    platform::TimerId after(std::chrono::nanoseconds, platform::Block) override { return 0; }
    bool cancel(platform::TimerId) override { return false; }
    std::deque<platform::Block> blocks;
};

TEST(Queue, emptyMessagesHoldUpTheirPeerToo) {
    struct Target final : DeliveryTarget {
        void deliverOpen() override {}
        void deliverMessage(MessageKind, std::string_view) override { ++messages; }
        void deliverDrain() override {}
        void deliverClose() override {}
        int messages = 0;
    };
    const auto queue = std::make_shared<HeldQueue>();
    const auto target = std::make_shared<Target>();
    int resumed = 0;
    const auto delivery = std::make_shared<Delivery>(queue, [&] { ++resumed; });
    int sent = 0;
    while (!delivery->full() && sent < 1'000'000) {
        for (int i = 0; i < 1000; ++i, ++sent) {
            delivery->message(MessageKind::binary, {}, *target);
        }
        delivery->post(target);
    }
    EXPECT_LT(sent, 200'000);
    for (; !queue->blocks.empty(); queue->blocks.pop_front()) {
        queue->blocks.front()();
    }
    EXPECT_EQ(target->messages, sent);
    EXPECT_EQ(resumed, 1);
    EXPECT_FALSE(delivery->full());
}

TEST(Time, aConnectionThatAnswersPingsStaysOpen) {
    ClientOptions impatient;
    impatient.pingInterval = 10ms;
    impatient.pingTimeout = 10s;
    const Door door;
    Story story;
    WebSocketClient client(story.handlers());
    ASSERT_TRUE(client.open(urlOf(door.port()), impatient).ok());
    const Wire wire = door.accept();
    wire.send(upgradeAnswer(wire.receiveHead()));
    for (int i = 0; i < 3; ++i) {
        const std::string ping = wire.receive();
        ASSERT_TRUE(ping.starts_with(std::string("\x89\x80", 2)));
        wire.send(std::string("\x8A\0", 2));
    }
    EXPECT_EQ(story.closes, 0);
    client.close();
    EXPECT_TRUE(wire.receive().starts_with("\x88"));
}

TEST(Time, connectingIsBoundedWhereverItStops) {
    ClientOptions options;
    options.connectTimeout = 30ms;
    const Door door; // the system connects, and nobody answers
    const auto reasonOf = [&](const std::string& url) {
        Story story;
        WebSocketClient client(story.handlers());
        EXPECT_TRUE(client.open(url, options).ok());
        EXPECT_TRUE(story.awaitClosed());
        return story.closed.reason;
    };
    EXPECT_EQ(reasonOf("wss://127.0.0.1:" + std::to_string(door.port()) + "/"), "connecting took too long");
    options.proxy = Proxy{"127.0.0.1", door.port(), ""};
    EXPECT_EQ(reasonOf("ws://nowhere.example/"), "connecting took too long");
}

TEST(Time, aServerGivesUpOnClientsThatStaySilent) {
    Story served;
    ServerHandlers handlers;
    handlers.onClose = [&](const auto&, const Closed& closed) {
        served.tell([&] {
            ++served.closes;
            served.closed = closed;
        });
    };
    ServerOptions hurried;
    hurried.handshakeTimeout = 30ms;
    WebSocketServer greeter(handlers, hurried);
    const Wire silent(*greeter.listen("127.0.0.1", 0));
    silent.send("GET / HTTP/1.1\r\nHost: ");
    EXPECT_EQ(silent.receiveAll(), "");

    ServerOptions worried;
    worried.pingInterval = 30ms;
    worried.pingTimeout = 30ms;
    WebSocketServer listener(handlers, worried);
    const Wire gone(*listener.listen("127.0.0.1", 0));
    gone.send(upgradeRequest());
    gone.receiveHead();
    EXPECT_EQ(gone.receiveAll(), std::string("\x89\0", 2));
    ASSERT_TRUE(served.awaitClosed());
    EXPECT_EQ(served.closed.reason, "no answer to our ping");
    EXPECT_EQ(served.closes, 1) << "a connection that never opened is no event";
}

// A server that resets the connection as soon as it is there: writing may find out before reading does.
TEST(End, isToldWhenNotEvenTheRequestCanBeWritten) {
    struct ResetStream final : Stream {
        ResetStream() : Stream(asio::ip::tcp::socket(IOThread::shared().context())) {}
        void read(std::span<char>, std::shared_ptr<StreamEvents>) override {}
        std::size_t writeNow(std::string_view) override { return 0; }
        void write(std::string_view, std::shared_ptr<StreamEvents> events) override {
            asio::post(IOThread::shared().context(), [events] {
                events->onWritten(asio::error::broken_pipe, 0);
                events->onRead(asio::error::eof, 0);
            });
        }
    };
    struct Greeter final : Link, std::enable_shared_from_this<Greeter> {
        Greeter() : Link(Role::client, {}, nullptr) {}
        void start() {
            asio::post(IOThread::shared().context(), [link = shared_from_this()] {
                link->turn([&] {
                    link->attach(std::make_unique<ResetStream>());
                    link->sendRaw("GET / HTTP/1.1\r\n\r\n");
                    link->read();
                });
            });
        }
        std::shared_ptr<Link> self() override { return shared_from_this(); }
        void takeHandshake(std::span<char>&) override {}
        void deliverOpen() override {}
        void deliverMessage(MessageKind, std::string_view) override {}
        void deliverDrain() override {}
        void deliverClose() override { told.set_value(closed()); }
        std::promise<Closed> told;
    };
    const auto link = std::make_shared<Greeter>();
    auto told = link->told.get_future();
    link->start();
    ASSERT_EQ(told.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(told.get().code, CloseCode::abnormal);
}

} // namespace
} // namespace zentavo::websocket::test
