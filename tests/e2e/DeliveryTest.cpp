// In-app messages on the real network, store and cryptography; the screen alone is one of memory.

#include <thread>

#include "examples/support/TracePost.h"
#include "ports/linux/LinuxPlatform.h"
#include "ports/memory/ManualQueues.h"
#include "ports/memory/MemoryViews.h"
#include "ports/memory/MemoryWebView.h"
#include "tests/e2e/DevServer.h"
#include "zentavo/Zentavo.h"
#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::e2e {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// The console, which has no user interface.
class DeliveryConsoleTest : public EndToEndTest {};

TEST_F(DeliveryConsoleTest, TheTraceSaysWhyNothingWasShown) {
    ASSERT_EQ(console({"activate", "trace:post", "wait", "track:promo_never", "wait", "track:promo_full_screen", "wait",
                       "track:unknown", "wait"}),
              0);
    EXPECT_THAT(output, AllOf(HasSubstr("story 9010 (inline) is of a type that is not shown; story 9009 (slide_in) is "
                                        "of a type that is not shown; nothing to show"),
                              HasSubstr("chosen: story 9001; dropped, no user interface can show it"),
                              HasSubstr("Delivery for \"unknown\": 18 bytes, 0 campaigns; nothing to show")));
    for (const Map& request : server.requests("/interaction/v2", 4)) {
        EXPECT_EQ(*request.find("problems"), Value(List()));
    }
    const std::string unoffered = "nothing was offered: no campaign waits for this event";
    EXPECT_THAT(server.verdicts(),
                ElementsAre(unoffered, "not shown: no user interface can show it, no user interface is attached",
                            "not shown: story 9010 is of a type that is not shown; story 9009 is of a type that is not "
                            "shown",
                            unoffered));
    server.fault("path=/interaction/v2&times=1&body=%7B%22webContents%22%3A7%7D");
    ASSERT_EQ(console({"activate", "trace", "track:e", "wait"}), 0);
    EXPECT_THAT(output, HasSubstr("the answer cannot be read"));
}

TEST_F(DeliveryConsoleTest, MediaAndLinksWorkWithoutAUserInterface) {
    ASSERT_EQ(console({"activate", "media:promo_gamified", "media:promo_full_screen,9001", "media:promo_full_screen,1",
                       "link:shop://open?utm=mail&atm=a7", "wait", "track:after_link", "wait"}),
              0);
    EXPECT_THAT(output, AllOf(HasSubstr(R"("contents":[{"storyId":9002,)"),
                              HasSubstr(R"("contents":[{"storyId":9001,)"), HasSubstr(R"("contents":[]})")));
    for (const Map& request : server.requests("/interaction/app", 3)) {
        EXPECT_EQ(*request.find("problems"), Value(List()));
        EXPECT_EQ(*request.find("body")->asMap()->find("format"), "json");
    }
    const Map last = server.events(2).back();
    EXPECT_EQ(*last.find("extra")->asMap()->find("utm"), "mail");
}

class DeliveryTest : public EndToEndTest {
protected:
    DeliveryTest()
        : queues(std::make_shared<testing::ManualClock>()),
          views(std::make_shared<testing::MemoryViews>(queues.mainQueue())),
          webViews(std::make_shared<testing::MemoryWebViews>(queues.mainQueue())) {
        linux_port::LinuxOptions options;
        options.dataFolder = folder;
        const auto platform = linux_port::makeLinuxPlatform(options);
        auto interface = *platform->userInterface();
        interface.mainQueue = queues.mainQueue();
        interface.views = views;
        interface.webViews = webViews;
        platform->attach(std::move(interface));
        sdk = std::make_shared<Zentavo>(platform);
        Zentavo::setShared(sdk);
        sdk->setEndpoints(Endpoints::all(server.url()));
        sdk->setDeliveryTraceCallback(
            [this, post = examples::TracePost(platform, server.url())](const DeliveryTrace& trace) {
                post(trace);
                const std::lock_guard lock(mutex);
                traces.push_back(trace.text());
            });
        sdk->activate(Configuration{"1001", "555", "group.shop", "42"});
        server.requests("/event", 1); // app_install
        waitFor([&] { return said("app_install"); });
    }
    ~DeliveryTest() override {
        queues.runUntilIdle();
        Zentavo::setShared(nullptr);
        sdk.reset();
        queues.runUntilIdle();
    }

    /// Runs the main queue until it is so; the network takes its own time.
    void waitFor(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition()) {
            ASSERT_LT(std::chrono::steady_clock::now(), end) << lines();
            if (queues.runUntilIdle() == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
    }
    std::string lines() {
        const std::lock_guard lock(mutex);
        std::string all;
        for (const std::string& line : traces) {
            all += line + "\n";
        }
        return all;
    }
    bool said(const std::string& words) { return lines().find(words) != std::string::npos; }
    void post(const std::string& text) {
        webViews->last()->post("eventHandler", json::read(text).value());
        queues.runUntilIdle();
    }
    /// The one request for `path`, with which nothing was wrong.
    Map accepted(const std::string& path) {
        const auto requests = server.requests(path, 1);
        EXPECT_EQ(requests.size(), 1U) << path;
        const Map request = requests.empty() ? Map() : requests.front();
        EXPECT_EQ(*request.find("problems"), Value(List())) << path;
        EXPECT_EQ(*request.find("status"), 200) << path;
        return request;
    }

    testing::ManualQueues queues;
    std::shared_ptr<testing::MemoryViews> views;
    std::shared_ptr<testing::MemoryWebViews> webViews;
    std::shared_ptr<Zentavo> sdk;
    std::mutex mutex;
    std::vector<std::string> traces;
};

TEST_F(DeliveryTest, AHandWrittenMessageIsAskedForWithASignatureThatTheServerAccepts) {
    std::vector<std::string> routes;
    sdk->setHandleChangeRouteTemplate([&](std::string route) { routes.push_back(std::move(route)); });
    sdk->track(CDPEvent("promo_code_mode", {{{"url", "https://shop.example/p/1"}, {"path", "a\\/b"}}}));
    waitFor([&] { return webViews->last() && webViews->last()->html(); });
    EXPECT_THAT(*webViews->last()->html(), HasSubstr("How was your last order?"));
    accepted("/interaction/media-template/info");
    accepted("/interaction/media-template/view-info");
    waitFor([&] { return views->named("zentavo.popup")->frame() == platform::Rect{-5, 222, 400, 400}; });
    accepted("/track/impression");
    webViews->last()->finishLoad();
    queues.runUntilIdle();
    accepted("/track/viewable");

    const std::string html = *webViews->last()->html();
    const std::size_t start = html.find("http", html.find("\"trackingUrl\": \""));
    const std::string click = html.substr(start, html.find('"', start) - start);
    post(R"({"type":"mt.Action.redirect","vtx902-click-data":{"href":"shop://orders","trackingUrl":")" + click +
         "\"}}");
    EXPECT_EQ(routes, std::vector<std::string>{"shop://orders"});
    EXPECT_EQ(*accepted("/track/click").find("query")->asMap()->find("resp_type"), "json");
    const auto& state = *sdk->state();
    waitFor([&] { return state.store()->string(state.keys.atm).has_value(); });
    EXPECT_EQ(state.store()->string(state.keys.clkBc), "click-1");
    EXPECT_EQ(state.store()->string(state.keys.utm), "in_app_promo_code_mode");
    EXPECT_EQ(state.store()->string(state.keys.atm), "click-1");
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_THAT(lines(), HasSubstr("closed by a click"));
}

TEST_F(DeliveryTest, AThirdShowIsCappedByTheStory) {
    for (int shown = 1; shown <= 2; ++shown) {
        sdk->track(CDPEvent("promo_full_screen"));
        waitFor([&] { return sdk->isShowingTemplate(); });
        ASSERT_TRUE(webViews->last());
        EXPECT_EQ(webViews->last()->url()->path(), "/html/index-mobile-border.html");
        webViews->last()->finishLoad();
        queues.runUntilIdle();
        EXPECT_THAT(webViews->last()->evaluated(), Contains(HasSubstr("showCampaign({")));
        post(R"({"type":"zentavo-cdp-webview-closed"})");
        EXPECT_FALSE(sdk->isShowingTemplate());
        // The server tells deliveries of one event apart by the order in which it hears of them.
        waitFor([&] { return server.verdicts().at(0) == "promo_full_screen: shown, then closed by its page"; });
    }
    sdk->track(CDPEvent("promo_full_screen"));
    waitFor([&] { return said("story 9001 (full_screen) capped by story: impression 2 of 2; nothing to show"); });
    EXPECT_FALSE(sdk->isShowingTemplate());

    // The server could see none of this; the app's traces, which it was sent, say it.
    std::vector<std::string> verdicts;
    waitFor([&] {
        verdicts = server.verdicts();
        return verdicts.size() >= 3 && verdicts[0].starts_with("not shown");
    });
    EXPECT_EQ(verdicts[0], "not shown: story 9001 is capped by story: impression 2 of 2");
    EXPECT_EQ(verdicts[1], "promo_full_screen: shown, then closed by its page");
    EXPECT_EQ(verdicts[2], "promo_full_screen: shown, then closed by its page");
}

TEST_F(DeliveryTest, OfTwoDeliveriesThatRaceOneIsShown) {
    const auto count = [&](const std::string& words) {
        const std::string all = lines();
        int found = 0;
        for (std::size_t at = all.find(words); at != std::string::npos; at = all.find(words, at + 1)) {
            ++found;
        }
        return found;
    };
    for (int round = 1; round <= 5; ++round) {
        SCOPED_TRACE(round);
        sdk->track(CDPEvent("promo_gamified"));
        sdk->track(CDPEvent("promo_bar_top"));
        waitFor([&] { return count("; dropped, another message is on screen\n") == round; });
        ASSERT_EQ(count("; presented\n"), round);
        EXPECT_TRUE(sdk->isShowingTemplate());
        EXPECT_EQ(webViews->made(), static_cast<std::size_t>(round));
        EXPECT_EQ(views->shown().size(), 2U) << "one overlay, one popup";
        post(R"({"type":"zentavo-cdp-webview-closed"})");
        EXPECT_FALSE(sdk->isShowingTemplate());
    }
    server.requests("/interaction/v2", 11); // with the one for the activation's own event
    EXPECT_EQ(count("; presented\n"), 5) << "nothing comes late";
}

TEST_F(DeliveryTest, WhatIsRefusedOrLostLeavesAMessageThatCanBeClosed) {
    server.fault("path=/interaction/media-template/view-info&times=1&status=500&body=down");
    server.fault("path=/interaction/media-template/info&times=1&body=%5B%5D");
    sdk->track(CDPEvent("promo_code_mode"));
    waitFor([&] { return sdk->isShowingTemplate(); });
    server.requests("/interaction/media-template/view-info", 1);
    EXPECT_FALSE(webViews->last()->html());
    views->named("zentavo.overlay")->tap();
    queues.runUntilIdle();
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_THAT(lines(), HasSubstr("closed by a tap beside it"));
}

} // namespace
} // namespace zentavo::e2e
