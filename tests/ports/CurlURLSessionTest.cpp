// What only bytes on a wire can show: redirects, cookies, timeouts, limits, broken connections, how many at once.

#include "ports/linux/CurlURLSession.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <zlib.h>

#include "ports/linux/WorkerQueue.h"
#include "tests/support/LoopbackServer.h"

namespace zentavo::linux_port {
namespace {

using namespace std::chrono_literals;
using platform::Header;
using platform::URLErrorKind;
using platform::URLRequest;
using platform::URLResult;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::LoopbackServer;
using Reply = LoopbackServer::Reply;

class CurlURLSessionTest : public ::testing::Test {
protected:
    using Handler = std::function<void(const LoopbackServer::Request&, Reply&)>;

    /// What the server does at `path`, queries aside.
    void at(std::string path, Handler handler) { handlers_[std::move(path)] = std::move(handler); }
    static Handler answer(int status, std::string body, std::string headers = {}) {
        return [=](const LoopbackServer::Request&, Reply& reply) { reply.answer(status, body, headers); };
    }

    std::shared_ptr<URLRequest> request(std::string_view path, std::string_view scheme = "http") {
        auto made = std::make_shared<URLRequest>(server.url(path, scheme));
        made->idleTimeout = 10s;
        return made;
    }
    std::future<URLResult> start(std::shared_ptr<const URLRequest> what) {
        auto promise = std::make_shared<std::promise<URLResult>>();
        session.start(std::move(what), queue, [promise](URLResult result) { promise->set_value(std::move(result)); });
        return promise->get_future();
    }
    URLResult send(std::shared_ptr<const URLRequest> what) { return start(std::move(what)).get(); }
    URLResult get(std::string_view path) { return send(request(path)); }
    /// Sends what must fail, and says why it did.
    platform::URLError failure(std::shared_ptr<const URLRequest> what) {
        return send(std::move(what)).error.value_or(platform::URLError{URLErrorKind::other, "no failure at all"});
    }

    std::map<std::string, Handler> handlers_; ///< written before the first request only
    LoopbackServer server{[this](const LoopbackServer::Request& request, Reply& reply) {
        handlers_.at(request.target.substr(0, request.target.find('?')))(request, reply);
    }};
    WorkerThread worker;
    std::shared_ptr<WorkerQueue> queue = std::make_shared<WorkerQueue>(worker);
    CurlNetworkThread network;
    CurlURLSession session{network};
};

std::string gzip(const std::string& plain) {
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY);
    std::string packed(compressBound(plain.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

TEST_F(CurlURLSessionTest, RedirectsChangeTheMethodAsBrowsersDo) {
    at("/end", answer(200, "end", "X-Hop: last\r\n"));
    for (const int status : {301, 302, 303, 307, 308}) {
        at("/" + std::to_string(status), answer(status, "left behind", "Location: /end\r\nX-Hop: first\r\n"));
    }
    struct Case {
        int status;
        std::string method;
        std::string then;
    };
    for (const auto& [status, method, then] : {Case{301, "POST", "GET"},
                                               {302, "POST", "GET"},
                                               {303, "POST", "GET"},
                                               {307, "POST", "POST"},
                                               {308, "POST", "POST"},
                                               {303, "PUT", "GET"},
                                               {307, "PUT", "PUT"},
                                               {301, "PUT", "PUT"},
                                               {302, "GET", "GET"}}) {
        auto made = request("/" + std::to_string(status));
        made->method = method;
        made->body = method == "GET" ? nullptr : std::make_shared<std::string>("body");
        const auto result = send(made);
        ASSERT_FALSE(result.error) << status << method << result.error->message;
        EXPECT_EQ(result.data, "end");
        EXPECT_THAT(result.response->headers, Contains(Header("X-Hop", "last")));
        EXPECT_THAT(result.response->headers, Not(Contains(Header("X-Hop", "first"))));
        EXPECT_EQ(server.requests().back().method, then) << status << method;
        EXPECT_EQ(server.requests().back().body, then == "GET" ? "" : "body") << status << method;
    }
}

TEST_F(CurlURLSessionTest, RedirectsEndAndStayWithinHTTP) {
    at("/loop", answer(302, "", "Location: /loop\r\n"));
    at("/away", answer(302, "", "Location: file:///etc/hostname\r\n"));
    EXPECT_EQ(failure(request("/loop")).kind, URLErrorKind::tooManyRedirects);
    EXPECT_EQ(server.requests().size(), 21U);
    const auto away = get("/away");
    EXPECT_EQ(away.error->kind, URLErrorKind::unsupportedURL);
    EXPECT_FALSE(away.data);
}

TEST_F(CurlURLSessionTest, CookiesAreSharedByAllRequests) {
    at("/set", answer(200, "", "Set-Cookie: visitor=v1; Path=/\r\n"));
    at("/use", answer(200, ""));
    get("/set");
    std::vector<std::future<URLResult>> under;
    for (int i = 0; i < 6; ++i) { // more than one easy handle
        under.push_back(start(request("/use")));
    }
    for (auto& one : under) {
        one.get();
    }
    for (const auto& seen : server.requests()) {
        EXPECT_EQ(seen.header("Cookie"), seen.target == "/use" ? "visitor=v1" : "(none)");
    }
}

TEST_F(CurlURLSessionTest, HeadersOfOurOwnGiveWayToTheRequests) {
    at("/", answer(200, ""));
    get("/");
    auto made = request("/");
    made->headers = {{"user-agent", "mine"}, {"Accept-Encoding", "identity"}};
    send(made);
    get("/"); // the handle is used again, and must not remember
    const auto seen = server.requests();
    EXPECT_THAT(seen[0].header("User-Agent"), ::testing::StartsWith("ZentavoSDK/"));
    EXPECT_EQ(seen[1].header("User-Agent"), "mine");
    EXPECT_EQ(seen[1].header("Accept-Encoding"), "identity");
    EXPECT_EQ(seen[2].headers, seen[0].headers);
    for (const auto& one : seen) {
        EXPECT_EQ(one.header("Expect"), "(none)");
    }

    made = request("/");
    made->headers = {{"X-A", "1\r\nX-Injected: 2"}};
    EXPECT_EQ(failure(made).kind, URLErrorKind::other);
    made = request("/");
    made->method = "GET / HTTP/1.1\r\nX-Injected:";
    EXPECT_EQ(failure(made).kind, URLErrorKind::other);
    EXPECT_EQ(server.requests().size(), 3U);
}

TEST_F(CurlURLSessionTest, AnIdleExchangeTimesOutAndASlowOneDoesNot) {
    at("/hang", [](const auto&, Reply& reply) { reply.hang(); });
    at("/tls", [](const auto&, Reply& reply) { reply.hang(); });
    at("/half", [](const auto&, Reply& reply) {
        reply.send("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nab");
        reply.hang();
    });
    at("/drip", [](const auto&, Reply& reply) {
        reply.send("HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n");
        for (int i = 0; i < 8; ++i) {
            std::this_thread::sleep_for(150ms);
            reply.send("x");
        }
    });
    const auto impatient = [&](std::string_view path, std::string_view scheme = "http") {
        auto made = request(path, scheme);
        made->idleTimeout = 250ms;
        return made;
    };
    const auto begun = std::chrono::steady_clock::now();
    auto half = start(impatient("/half"));
    auto handshake = start(impatient("/", "https")); // connecting counts too
    EXPECT_EQ(failure(impatient("/hang")).kind, URLErrorKind::timedOut);
    const auto took = std::chrono::steady_clock::now() - begun;
    EXPECT_GE(took, 250ms);
    EXPECT_LT(took, 2s);
    const auto halfway = half.get();
    EXPECT_EQ(halfway.error->kind, URLErrorKind::timedOut);
    EXPECT_EQ(halfway.response->status, 200) << "the head had arrived";
    EXPECT_FALSE(halfway.data);
    EXPECT_EQ(handshake.get().error->kind, URLErrorKind::timedOut);

    auto patient = impatient("/drip");
    patient->idleTimeout = 1s;
    EXPECT_EQ(send(patient).data, "xxxxxxxx") << "1.2 s in all, but never one without a byte";
    auto bounded = request("/drip");
    bounded->totalTimeout = 150ms;
    EXPECT_EQ(failure(bounded).kind, URLErrorKind::timedOut);
}

TEST_F(CurlURLSessionTest, EachFailureHasItsKindAndAMessageThatNamesTheHost) {
    at("/half", [](const auto&, Reply& reply) {
        reply.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nabc");
        reply.reset();
    });
    at("/nothing", [](const auto&, Reply& reply) { reply.close(); });
    at("/short", [](const auto&, Reply& reply) {
        reply.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nabc");
        reply.close();
    });
    at("/noise", [](const auto&, Reply& reply) {
        reply.send("\x16\x03 what is this\r\n\r\n");
        reply.close();
    });
    const auto place = "127.0.0.1:" + std::to_string(server.port());
    for (const char* path : {"/half", "/short", "/nothing"}) {
        const auto result = get(path);
        ASSERT_TRUE(result.error) << path;
        EXPECT_EQ(result.error->kind, URLErrorKind::connectionLost) << path;
        EXPECT_THAT(result.error->message, HasSubstr(place));
        EXPECT_FALSE(result.data);
    }
    EXPECT_TRUE(get("/noise").error);

    const auto port = tests::closedPort();
    const auto refused = failure(std::make_shared<URLRequest>(*URL::parse("http://127.0.0.1:" + std::to_string(port))));
    EXPECT_EQ(refused.message, "Connection refused (127.0.0.1:" + std::to_string(port) + ")");

    at("/tls", [](const auto&, Reply& reply) { reply.answer(400); });
    EXPECT_EQ(failure(request("/", "https")).kind, URLErrorKind::secureConnectionFailed);
    // A label of more than 63 characters: no name server is asked.
    const auto nowhere = "http://" + std::string(70, 'x') + ".invalid/";
    EXPECT_EQ(failure(std::make_shared<URLRequest>(*URL::parse(nowhere))).kind, URLErrorKind::cannotResolveHost);
}

TEST_F(CurlURLSessionTest, AnAnswerIsDecodedAndItsDecodedLengthBounded) {
    const std::string text(100'000, 'z');
    at("/packed", answer(200, gzip(text), "Content-Encoding: gzip\r\n"));
    at("/bomb", answer(200, gzip(std::string(8'000'000, '\0')), "Content-Encoding: gzip\r\n"));
    at("/flood", [](const auto&, Reply& reply) {
        reply.send("HTTP/1.1 200 OK\r\nContent-Length: 104857600\r\n\r\n");
        for (int i = 0; i < 100; ++i) {
            reply.send(std::string(1U << 20U, 'x'));
        }
    });
    at("/headers", [](const auto&, Reply& reply) {
        reply.send("HTTP/1.1 200 OK\r\n");
        for (int i = 0; i < 3000; ++i) {
            reply.send("X-Pad: " + std::string(1000, 'x') + "\r\n");
        }
        reply.answer(200);
    });
    EXPECT_EQ(get("/packed").data, text);
    for (const char* path : {"/packed", "/bomb", "/flood"}) {
        auto made = request(path);
        made->maximumAnswerBytes = 99'999;
        const auto result = send(made);
        ASSERT_TRUE(result.error) << path;
        EXPECT_EQ(result.error->kind, URLErrorKind::answerTooLarge) << path;
        EXPECT_EQ(result.response->status, 200);
    }
    EXPECT_TRUE(get("/headers").error);
    auto exact = request("/packed");
    exact->maximumAnswerBytes = text.size();
    EXPECT_EQ(send(exact).data, text);
}

TEST_F(CurlURLSessionTest, ChunkedInterimAndTrailingPartsMakeOneAnswer) {
    at("/", [](const auto&, Reply& reply) {
        reply.send("HTTP/1.1 103 Early Hints\r\nX-Early: yes\r\n\r\n");
        reply.send("HTTP/1.1 200 OK\r\nX-B:  two \r\nTransfer-Encoding: chunked\r\nX-A: one\r\nX-B: three\r\n\r\n");
        reply.send("3\r\nabc\r\n4\r\ndefg\r\n0\r\nX-Trailer: t\r\n\r\n");
    });
    const auto result = get("/");
    EXPECT_EQ(result.data, "abcdefg");
    EXPECT_THAT(result.response->headers, ElementsAre(Header("X-B", "two"), Header("Transfer-Encoding", "chunked"),
                                                      Header("X-A", "one"), Header("X-B", "three")));
}

TEST_F(CurlURLSessionTest, ConnectionsAreKeptAliveAndTriedAgainWhenTheyTurnOutDead) {
    at("/", answer(200, "here"));
    at("/last", [](const auto&, Reply& reply) {
        reply.answer(200, "last");
        reply.close();
    });
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(get("/").data, "here");
    }
    EXPECT_EQ(server.connections(), 1);
    get("/last"); // the server hangs up after this one without a word
    EXPECT_EQ(get("/").data, "here");
}

TEST_F(CurlURLSessionTest, SixAtOnceToAHostInTheOrderOfStart) {
    std::promise<void> open;
    const auto gate = open.get_future().share();
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    at("/", [&](const LoopbackServer::Request&, Reply& reply) {
        const int now = ++inside;
        int before = most;
        while (before < now && !most.compare_exchange_weak(before, now)) {
        }
        gate.wait();
        --inside;
        reply.answer(200);
    });
    std::vector<std::future<URLResult>> all;
    for (int i = 0; i < 40; ++i) {
        all.push_back(start(request("/?n=" + std::to_string(i))));
    }
    while (inside < 6) {
        std::this_thread::sleep_for(1ms);
    }
    // Another host has connections of its own: nobody there waits for these.
    LoopbackServer other(answer(200, "other"));
    EXPECT_EQ(send(std::make_shared<URLRequest>(other.url("/"))).data, "other");
    std::set<std::string> first;
    for (const auto& seen : server.requests()) {
        first.insert(seen.target);
    }
    EXPECT_EQ(first, (std::set<std::string>{"/?n=0", "/?n=1", "/?n=2", "/?n=3", "/?n=4", "/?n=5"}));
    open.set_value();
    for (auto& one : all) {
        EXPECT_FALSE(one.get().error);
    }
    EXPECT_EQ(most, 6);
    EXPECT_LE(server.connections(), 6);
}

TEST_F(CurlURLSessionTest, ACancelledExchangeMakesRoomWhetherItWaitedOrRan) {
    at("/hang", [](const auto&, Reply& reply) { reply.hang(); });
    at("/", answer(200, "through"));
    std::vector<std::shared_ptr<platform::URLTask>> tasks;
    std::atomic<int> cancelled = 0;
    for (int i = 0; i < 30; ++i) { // six run, the others wait behind them
        tasks.push_back(session.start(request("/hang"), queue, [&](const URLResult& result) {
            cancelled += result.error && result.error->kind == URLErrorKind::cancelled ? 1 : 0;
        }));
    }
    auto last = start(request("/"));
    while (server.requests().size() < 6) {
        std::this_thread::sleep_for(1ms);
    }
    for (auto task = tasks.rbegin(); task != tasks.rend(); ++task) { // the waiting ones first
        (*task)->cancel();
    }
    EXPECT_EQ(last.get().data, "through");
    while (cancelled < 30) { // those that ran may be told after it
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(server.requests().size(), 7U) << "what was cancelled while it waited was never sent";
}

TEST_F(CurlURLSessionTest, ManyThatCannotBeSentStandInNobodysWay) {
    at("/", answer(200, "through"));
    std::vector<std::future<URLResult>> bad;
    for (int i = 0; i < 2000; ++i) {
        auto made = request("/");
        made->method = "";
        bad.push_back(start(made));
    }
    EXPECT_EQ(get("/").data, "through");
    for (auto& one : bad) {
        EXPECT_EQ(one.get().error->kind, URLErrorKind::other);
    }
}

TEST_F(CurlURLSessionTest, WhatComesAfterTheEndIsDroppedAtOnce) {
    at("/", answer(200, ""));
    get("/");
    network.drain(1s);
    const auto held = std::make_shared<int>(0);
    session.start(request("/"), queue, [held](const URLResult&) {});
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(server.requests().size(), 1U);
}

} // namespace
} // namespace zentavo::linux_port
