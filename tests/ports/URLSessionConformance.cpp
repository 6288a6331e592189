// What URLSession.h promises, held against every port.
//
// What only bytes on a wire can show is in CurlURLSessionTest.cpp: the method after a redirect, cookies, an idle timeout
// that a slow answer does not meet, what is left of a broken answer. A scripted session has none of these: it hands out
// the last hop's answer as its test wrote it, and leaves open what its test leaves open.

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "tests/ports/Port.h"

namespace zentavo::tests {
namespace {

using namespace std::chrono_literals;
using platform::Header;
using platform::URLErrorKind;
using platform::URLRequest;
using platform::URLResult;
using ::testing::Contains;
using ::testing::Not;
using ::testing::Pair;

class URLSessionConformance : public PortTest {
protected:
    /// Where an exchange's end arrives.
    struct Outcome {
        std::atomic<int> told = 0;
        URLResult result;
        std::shared_ptr<platform::URLTask> task;
    };

    std::shared_ptr<URLRequest> request(std::string_view path, std::string method = "GET",
                                        std::optional<std::string> body = {}) {
        auto made = std::make_shared<URLRequest>(port->url(path));
        made->method = std::move(method);
        if (body) {
            made->body = std::make_shared<const std::string>(std::move(*body));
        }
        return made;
    }
    std::shared_ptr<Outcome> start(std::shared_ptr<const URLRequest> what) {
        auto outcome = std::make_shared<Outcome>();
        outcome->task = port->session().start(std::move(what), queue, [outcome](URLResult result) {
            outcome->result = std::move(result);
            ++outcome->told;
        });
        return outcome;
    }
    URLResult finish(const std::shared_ptr<Outcome>& outcome) {
        EXPECT_TRUE(port->until([&] { return outcome->told > 0; }));
        return outcome->result;
    }
    URLResult send(std::shared_ptr<const URLRequest> what) { return finish(start(std::move(what))); }

    const std::shared_ptr<platform::DispatchQueue> queue = port->queues().make("net", platform::QueueKind::serial);
};

TEST_P(URLSessionConformance, MethodBodyAndHeadersArriveAsTheyAre) {
    const std::string bytes("{\"a\":\"\0ü\"}", 11);
    for (const std::string method : {"POST", "PUT", "PATCH", "DELETE", "GET"}) {
        auto made = request("/status/200?q=1&r=%20a", method, bytes);
        made->headers = {{"Content-Type", "application/json"}, {"X-Empty", ""}, {"X-Two", "b"}};
        ASSERT_FALSE(send(made).error) << method;
        const auto seen = port->seen().back();
        EXPECT_EQ(seen.method, method);
        EXPECT_EQ(seen.target, "/status/200?q=1&r=%20a");
        EXPECT_EQ(seen.body, bytes) << method;
        for (const auto& header : made->headers) {
            EXPECT_THAT(seen.headers, Contains(header)) << method;
        }
    }
}

TEST_P(URLSessionConformance, AnEmptyBodyIsDataAndAnAbsentOneIsNot) {
    ASSERT_FALSE(send(request("/status/200", "GET")).error);
    ASSERT_FALSE(send(request("/status/200", "GET", "")).error);
    ASSERT_FALSE(send(request("/status/200", "POST")).error);
    ASSERT_FALSE(send(request("/status/200", "PUT", "")).error);
    const auto seen = port->seen();
    ASSERT_EQ(seen.size(), 4U);
    EXPECT_EQ(seen[3].method, "PUT");
    if (port->speaksHTTP()) {
        const auto length = Pair("Content-Length", "0");
        EXPECT_THAT(seen[0].headers, Not(Contains(length)));
        EXPECT_THAT(seen[1].headers, Contains(length));
        EXPECT_THAT(seen[2].headers, Contains(length)) << "a POST always says its length";
        EXPECT_THAT(seen[3].headers, Contains(length));
        EXPECT_THAT(seen[2].headers, Not(Contains(Pair("Content-Type", ::testing::_)))) << "nothing is made up";
    }
}

TEST_P(URLSessionConformance, EveryStatusIsACompleteExchange) {
    for (const int status : {200, 201, 404, 500}) {
        const auto result = send(request("/status/" + std::to_string(status)));
        ASSERT_FALSE(result.error);
        EXPECT_EQ(result.response->status, status);
        EXPECT_EQ(result.data, "status " + std::to_string(status));
        EXPECT_THAT(result.response->headers, Contains(Header("X-Far", "side")));
    }
    const auto empty = send(request("/empty"));
    ASSERT_FALSE(empty.error);
    EXPECT_EQ(empty.data, "") << "no bytes are data too";
}

TEST_P(URLSessionConformance, AFailureHasAnErrorAndNoData) {
    const auto refused = send(std::make_shared<URLRequest>(port->deadURL()));
    ASSERT_TRUE(refused.error);
    EXPECT_EQ(refused.error->kind, URLErrorKind::cannotConnect);
    EXPECT_FALSE(refused.error->message.empty());
    EXPECT_FALSE(refused.data);
    EXPECT_FALSE(refused.response);

    for (const auto& [path, kind] :
         {std::pair("/reset", URLErrorKind::connectionLost), std::pair("/loop", URLErrorKind::tooManyRedirects)}) {
        const auto broken = send(request(path, "POST", "body"));
        ASSERT_TRUE(broken.error) << path;
        EXPECT_EQ(broken.error->kind, kind) << path;
        EXPECT_FALSE(broken.error->message.empty());
        EXPECT_FALSE(broken.data) << "not half of it either";
    }
    if (port->watchesIdleTime()) {
        auto idle = request("/hang");
        idle->idleTimeout = 200ms;
        const auto late = send(idle);
        ASSERT_TRUE(late.error);
        EXPECT_EQ(late.error->kind, URLErrorKind::timedOut);
        EXPECT_FALSE(late.data);
    }
    EXPECT_EQ(send(request("/status/200")).data, "status 200") << "none of them harms the next";

    for (const char* text : {"ftp://far.example/", "file:///etc/hostname", "relative/path"}) {
        const auto unsupported = send(std::make_shared<URLRequest>(*URL::parse(text)));
        ASSERT_TRUE(unsupported.error) << text;
        EXPECT_EQ(unsupported.error->kind, URLErrorKind::unsupportedURL);
    }
}

TEST_P(URLSessionConformance, TheCompletionIsCalledOnceOnTheQueueAndNeverInsideStart) {
    std::atomic<int> told = 0;
    std::atomic<bool> inside = true;
    std::atomic<bool> early = false;
    std::vector<std::shared_ptr<const URLRequest>> requests = {request("/status/200"), request("/empty"),
                                                               std::make_shared<URLRequest>(*URL::parse("ftp://x/")),
                                                               std::make_shared<URLRequest>(port->deadURL())};
    queue->async([&] { // on the serial queue itself: nothing else may run on it meanwhile
        for (const auto& one : requests) {
            port->session().start(one, queue, [&](URLResult) {
                early = early || inside;
                ++told;
            });
        }
        inside = false;
    });
    ASSERT_TRUE(port->until([&] { return told == 4; }));
    port->pass(10ms);
    EXPECT_EQ(told, 4);
    EXPECT_FALSE(early);
}

TEST_P(URLSessionConformance, CancelEndsTheExchangeAndTellsSoOnce) {
    const auto inFlight = start(request("/hang"));
    ASSERT_TRUE(port->until([&] { return port->seen().size() == 1; }));
    inFlight->task->cancel();
    inFlight->task->cancel();
    const auto atOnce = start(request("/hang"));
    atOnce->task->cancel();
    for (const auto& outcome : {inFlight, atOnce}) {
        const auto result = finish(outcome);
        ASSERT_TRUE(result.error);
        EXPECT_EQ(result.error->kind, URLErrorKind::cancelled);
        EXPECT_FALSE(result.data);
    }

    const auto done = start(request("/status/200"));
    EXPECT_FALSE(finish(done).error);
    done->task->cancel(); // too late to matter
    port->pass(10ms);
    for (const auto& outcome : {inFlight, atOnce, done}) {
        EXPECT_EQ(outcome->told, 1);
    }
}

TEST_P(URLSessionConformance, AnExchangeGoesOnWithoutItsTask) {
    const auto outcome = start(request("/status/200"));
    outcome->task.reset();
    EXPECT_EQ(finish(outcome).response->status, 200);
}

TEST_P(URLSessionConformance, HundredsFromEightThreadsAreAllTold) {
    constexpr int threads = 8;
    constexpr int each = 25;
    std::atomic<int> good = 0;
    std::vector<std::thread> starters;
    const auto url = port->url("/status/200");
    for (int i = 0; i < threads; ++i) {
        starters.emplace_back([&] {
            for (int j = 0; j < each; ++j) {
                const auto task =
                    port->session().start(std::make_shared<URLRequest>(url), queue,
                                          [&](URLResult result) { good += result.data == "status 200" ? 1 : 0; });
            }
        });
    }
    for (auto& starter : starters) {
        starter.join();
    }
    EXPECT_TRUE(port->until([&] { return good == threads * each; })) << good;
}

TEST_P(URLSessionConformance, TheRequestIsReleasedWhenItsExchangeIsOver) {
    auto made = request("/status/200", "POST", "body");
    const std::weak_ptr<const std::string> body = made->body;
    const auto outcome = start(made);
    made.reset();
    finish(outcome);
    if (port->speaksHTTP()) { // the scripted session keeps every request for the test to look at
        EXPECT_TRUE(body.expired());
    }
}

INSTANTIATE_TEST_SUITE_P(Ports, URLSessionConformance, ::testing::ValuesIn(portsUnderTest()), PortTest::name);

} // namespace
} // namespace zentavo::tests
