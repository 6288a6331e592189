#include "devserver/RequestLog.h"

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zentavo::devserver {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::size_t all = 1'000;

LoggedRequest entry(const std::string& path, const std::string& event = "", std::size_t bodyBytes = 0) {
    LoggedRequest request;
    request.request.path = path;
    request.request.body.assign(bodyBytes, 'x');
    request.twin = ServicePath::of(path).twin;
    request.findings.event = event;
    return request;
}

std::vector<std::uint64_t> numbers(const std::vector<RequestLog::Shared>& requests) {
    std::vector<std::uint64_t> result;
    for (const auto& request : requests) {
        result.push_back(request->number);
    }
    return result;
}

RequestLog::Deadline in(int milliseconds) {
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}

TEST(RequestLog, KeepsTheLastAndCountsTheDropped) {
    RequestLog log({3, 1U << 20U});
    for (int i = 0; i < 5; ++i) {
        log.add(entry("/event"));
    }
    EXPECT_THAT(numbers(log.select({}, all)), ElementsAre(3, 4, 5));
    EXPECT_EQ(log.find(2), nullptr);
    EXPECT_EQ(log.find(4)->number, 4U);
    const auto counters = log.counters();
    EXPECT_EQ(counters.kept, 3U);
    EXPECT_EQ(counters.total, 5U);
    EXPECT_EQ(counters.dropped, 2U);

    log.clear();
    EXPECT_THAT(log.select({}, all), IsEmpty());
    EXPECT_EQ(log.counters().bytes, 0U);
    EXPECT_EQ(log.add(entry("/event"))->number, 6U) << "numbers are never used twice";
}

TEST(RequestLog, KeepsWithinItsMemory) {
    RequestLog log({100, 10'000});
    for (int i = 0; i < 5; ++i) {
        log.add(entry("/event", "", 3'000));
        EXPECT_LE(log.counters().bytes, 10'000U);
    }
    EXPECT_THAT(numbers(log.select({}, all)), ElementsAre(4, 5));
    log.add(entry("/event", "", 50'000));
    EXPECT_THAT(numbers(log.select({}, all)), ElementsAre(6)) << "one that is too heavy stands alone";
    log.add(entry("/event"));
    EXPECT_THAT(numbers(log.select({}, all)), ElementsAre(7));
}

TEST(RequestLog, FiltersCombine) {
    RequestLog log;
    log.add(entry("/event", "a"));
    log.add(entry("/sandbox/event", "a"));
    log.add(entry("/api/application"));
    LoggedRequest bad = entry("/event", "b");
    bad.findings.problems.add("uid is missing");
    log.add(std::move(bad));

    const auto select = [&](const std::string& query, std::size_t limit = all) {
        IncomingRequest request;
        request.setTarget("/_dev/requests?" + query);
        Problems problems;
        QueryReader reader(request.query, problems);
        const RequestFilter filter = RequestFilter::from(reader);
        reader.finish();
        EXPECT_THAT(problems.list(), IsEmpty()) << query;
        return numbers(log.select(filter, limit));
    };
    EXPECT_THAT(select("path=/event"), ElementsAre(1, 2, 4));
    EXPECT_THAT(select("path=/sandbox/event"), ElementsAre(2));
    EXPECT_THAT(select("path=/event&twin=production"), ElementsAre(1, 4));
    EXPECT_THAT(select("event=a&since=1"), ElementsAre(2));
    EXPECT_THAT(select("problems=1"), ElementsAre(4));
    EXPECT_THAT(select("problems=0", 2), ElementsAre(3, 4)) << "the newest, in order of arrival";
}

TEST(RequestLog, WaitingEndsWithTheLastThatIsNeeded) {
    RequestLog log;
    RequestFilter filter;
    filter.path = "/event";
    log.add(entry("/event"));
    EXPECT_TRUE(log.waitFor(filter, 1, in(0)));
    EXPECT_FALSE(log.waitFor(filter, 2, in(10)));

    const auto start = std::chrono::steady_clock::now();
    std::thread sender([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        log.add(entry("/other"));
        log.add(entry("/event"));
        log.add(entry("/event"));
    });
    EXPECT_TRUE(log.waitFor(filter, 3, in(10'000)));
    sender.join();

    std::thread closer([&] { log.close(); });
    EXPECT_FALSE(log.waitFor(filter, 4, in(10'000))) << "a server that stops keeps nobody waiting";
    closer.join();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(9));
}

TEST(RequestLog, WhatWasClearedDoesNotCountForTheWaiting) {
    RequestLog log;
    log.add(entry("/event"));
    std::thread clearer([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        log.clear();
        log.add(entry("/event"));
    });
    EXPECT_FALSE(log.waitFor({}, 2, in(100)));
    clearer.join();
}

TEST(RequestLog, AFollowerHearsOfEverythingOnce) {
    RequestLog log;
    log.add(entry("/event"));
    auto news = log.newsSince({}, 10);
    EXPECT_THAT(numbers(news.requests), ElementsAre(1));
    EXPECT_THAT(numbers(log.newsSince(news.position, 10).requests), IsEmpty());
    for (int i = 0; i < 5; ++i) {
        log.add(entry("/event"));
    }
    news = log.newsSince(news.position, 2);
    EXPECT_THAT(numbers(news.requests), ElementsAre(5, 6));
    EXPECT_EQ(news.skipped, 3U);
    log.clear();
    news = log.newsSince(news.position, 2);
    EXPECT_TRUE(news.cleared);
    EXPECT_THAT(numbers(news.requests), IsEmpty());
}

} // namespace
} // namespace zentavo::devserver
