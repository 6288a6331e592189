#include <thread>

#include "tests/support/SdkTest.h"

namespace zentavo {
namespace {

class EventDispatchTest : public SdkTest {};

TEST_F(EventDispatchTest, PortalChoosesSandboxOrProduction) {
    for (const auto& [portal, host] : std::map<std::string, std::string>{{"33167", "sandbox.example"},
                                                                         {"331670", "production.example"},
                                                                         {" 33167", "production.example"},
                                                                         {"", "production.example"}}) {
        Endpoints endpoints;
        endpoints.collection = "http://production.example";
        endpoints.collectionSandbox = "http://sandbox.example";
        sdk->setEndpoints(endpoints);
        activate(portal);
        memory.session->clear();
        sdk->track(CDPEvent("e"));
        const auto request = sent("/event").at(0);
        EXPECT_EQ(request->url.host(), host) << portal;
        EXPECT_EQ(request->method, "POST");
        EXPECT_EQ(request->url.queryItems(),
                  (std::vector<QueryItem>{{"resp_type", "json"}, {"portal_id", portal}, {"prop_id", "555"}}));
    }
}

TEST_F(EventDispatchTest, AScreenViewIsAnEventWithThreeProperties) {
    start();
    sdk->trackScreen("Home", "Home page", "main");
    const Map body = events().at(0);
    EXPECT_EQ(*body.find("en"), "view_screenview");
    EXPECT_EQ(*body.find("extra"), Value(Map{{"screen_name", "Home"},
                                             {"screen_label", "Home page"},
                                             {"screen_type", "main"},
                                             {"identify_type", "predict"},
                                             {"visitor_type", "new"}}));
}

TEST_F(EventDispatchTest, DebugTellsURLAndBody) {
    start();
    sdk->track(CDPEvent("quiet"));
    EXPECT_TRUE(memory.console->lines().empty());
    sdk->setDebug(true);
    sdk->track(CDPEvent("loud"));
    ASSERT_EQ(logged().size(), 2U);
    EXPECT_EQ(logged()[0], "TrackEvent: URL: " + sent("/event").at(1)->url.text());
    EXPECT_EQ(logged()[1], "TrackEvent: BODY: " + *sent("/event").at(1)->body);
}

TEST_F(EventDispatchTest, WhatJSONCannotSayIsALogLineAndTheNextEventGoesOut) {
    start();
    sdk->setDebug(true);
    Value deep("bottom");
    for (int i = 0; i < 1000; ++i) {
        deep = Map{{"n", std::move(deep)}};
    }
    const std::vector<Map> impossible{
        {{"price", std::numeric_limits<double>::quiet_NaN()}},
        {{"price", std::numeric_limits<double>::infinity()}},
        {{"name", "\xff\xfe"}},
        {{"\xc3", "key"}},
        {{"deep", deep}},
    };
    for (const Map& properties : impossible) {
        memory.console->clear();
        CDPEvent event("impossible");
        event.setEventProperties(properties);
        sdk->track(event);
        settle();
        EXPECT_THAT(logged(), ::testing::Contains(::testing::StartsWith("Error: ")).Times(1));
    }
    EXPECT_TRUE(events().empty());

    CDPEvent large("large");
    large.setEventProperties({{"text", std::string(2U << 20U, 'x')}, {"", "empty name"}});
    sdk->track(large);
    sdk->track(CDPEvent(""));
    EXPECT_THAT(eventNames(), ::testing::ElementsAre("large", ""));
}

TEST_F(EventDispatchTest, AnswersOfAnyKindDoNoHarm) {
    start();
    sdk->setDebug(true);
    for (const char* answer : {"", "garbage", "[1]", "{}", R"({"session_id":7})"}) {
        memory.session->setDefault({200, answer});
        sdk->track(CDPEvent("e"));
        settle();
    }
    EXPECT_EQ(events().size(), 5U);
    EXPECT_EQ(std::ranges::count_if(logged(), [](const auto& line) { return line.starts_with("Error: "); }), 2);
}

TEST_F(EventDispatchTest, AnEventUnderWayKeepsItsInstanceUntilTheAnswer) {
    start();
    memory.session->hold();
    sdk->track(CDPEvent("last"));
    const std::weak_ptr<Zentavo> instance = sdk;
    Zentavo::setShared(nullptr);
    sdk.reset();
    memory.session->answer(0, testing::ScriptedAnswer::failure(platform::URLErrorKind::connectionLost));
    settle();
    EXPECT_TRUE(instance.expired()) << "and no longer";
    memory.queues->advance(std::chrono::seconds(60));
    EXPECT_EQ(memory.session->count(), 2U) << "the lost event is repeated";
}

TEST_F(EventDispatchTest, EightThreadsAtOnceLoseNothing) {
    start();
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < 100; ++i) {
                sdk->track(CDPEvent("thread" + std::to_string(t)));
                sdk->setUid("u" + std::to_string(i));
                sdk->setCustomerProperties("c" + std::to_string(i), {{"n", i}});
                sdk->setContext(sdk->context());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    settle();
    EXPECT_EQ(events().size(), 800U);
}

} // namespace
} // namespace zentavo
