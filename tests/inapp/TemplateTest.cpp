#include "tests/inapp/InAppTest.h"

namespace zentavo {
namespace {

using namespace std::chrono_literals;
using platform::Rect;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ClosedBy = DeliveryTrace::ClosedBy;
using Outcome = DeliveryTrace::Outcome;

/// Messages of the visual editor, from the answer to their end, on a memory screen of 390 x 844.
class TemplateTest : public InAppTest {
protected:
    TemplateTest() {
        memory.attachViews();
        trace();
        Endpoints endpoints;
        endpoints.templateHost = "http://templates.example";
        sdk->setEndpoints(endpoints);
    }

    std::shared_ptr<testing::MemoryWebView> page() { return memory.webViews->last(); }
    std::shared_ptr<testing::MemoryView> view(const char* name) { return memory.views->named(name); }
    void post(const std::string& text) {
        page()->post("eventHandler", json::read(text).value());
        settle();
    }
    void present(const Map& changes = {}) {
        offer({campaign(1, changes)});
        trackAndSettle();
        ASSERT_TRUE(page());
    }
    void postClose() { post(R"({"type":"zentavo-cdp-webview-closed"})"); }
    void postClick(const std::string& data) {
        post(R"({"type":"zentavo-cdp-campaign-change-route","data":)" + data + "}");
    }
    static Map limit(const char* event, int value) {
        return {{"event", event}, {"value", value}, {"timeUnit", "daily"}, {"object", "person"}};
    }
};

TEST_F(TemplateTest, FollowsTheWindow) {
    const auto resize = [&](Rect bounds) {
        memory.platform()->userInterface()->mainQueue->async([&] { memory.views->setScreen(bounds, {20, 0, 10, 0}); });
        settle();
    };
    present({{"template", "floating_bar"}});
    page()->finishLoad();
    settle();
    const std::size_t before = page()->evaluated().size();
    resize({0, 0, 500, 700});
    EXPECT_EQ(view("zentavo.popup")->frame().width, 500) << "as wide as the window from the start";
    EXPECT_EQ(page()->evaluated().size(), before) << "it has no size yet that could be another";
    post(R"({"type":"zentavo-cdp-campaign-size","data":{"width":1,"height":80,
             "positionSettings":{"bottom":10,"positionSuffix":"%"}}})");
    EXPECT_EQ(view("zentavo.popup")->frame(), (Rect{0, 540, 500, 80}));
    resize({0, 0, 800, 1000});
    EXPECT_EQ(view("zentavo.popup")->frame(), (Rect{0, 810, 800, 80}));
    EXPECT_EQ(page()->frame(), (Rect{0, 0, 800, 80}));
    EXPECT_EQ(view("zentavo.overlay")->frame(), (Rect{0, 0, 800, 1000}));
    EXPECT_EQ(page()->evaluated().size(), before + 2);
    EXPECT_EQ(page()->evaluated().back(), "resizeView();");
    postClose();
    resize({0, 0, 300, 300}); // nobody listens any more

    present({{"template", "full_screen"}});
    post(R"({"type":"zentavo-cdp-campaign-size","data":{"width":200,"height":80}})");
    resize({0, 0, 390, 844});
    EXPECT_EQ(view("zentavo.popup")->frame(), (Rect{95, 0, 200, 844}));
}

TEST_F(TemplateTest, IsLoadedRunSizedRoundedAndClosed) {
    sdk->setDebug(true);
    present({{"template", "popup"}, {"frequencyCapping", limit("impression", 5)}});
    EXPECT_TRUE(sdk->isShowingTemplate());
    EXPECT_EQ(traces.back().outcome, Outcome::presented);
    EXPECT_EQ(store()->string("at_freq_capping"), R"({"1":{"timeExpire":1768521600.0,"impression":1}})");
    EXPECT_EQ(page()->url()->text(),
              "http://templates.example/html/index-mobile-border.html?v=2225&portalId=1001&propsId=555");
    EXPECT_EQ(page()->limit(), 60s);
    EXPECT_TRUE(view("zentavo.overlay")->isTouchThrough()) << "nothing to see yet, so the host is left alone";

    EXPECT_TRUE(page()->evaluated().empty()) << "not before the page has loaded";
    page()->finishLoad();
    settle();
    EXPECT_THAT(page()->evaluated(), ElementsAre("show(1)"));
    EXPECT_THAT(logged(), Contains("JavaScript evaluation succeeded! "));

    post(R"({"type":"zentavo-cdp-campaign-size","data":{"width":300,"height":200}})");
    EXPECT_EQ(view("zentavo.popup")->frame(), (Rect{45, 322, 300, 200}));
    EXPECT_EQ(page()->frame(), (Rect{0, 0, 300, 200}));
    EXPECT_EQ(page()->evaluated().back(), "resizeView();");
    EXPECT_FALSE(view("zentavo.overlay")->isTouchThrough());
    EXPECT_GT(view("zentavo.overlay")->background().alpha, 0);

    post(R"({"type":"zentavo-cdp-campaign-change-border-radius","data":{"radius":12}})");
    EXPECT_EQ(view("zentavo.popup")->cornerRadius(), 12);
    post(R"({"type":"zentavo-cdp-campaign-change-border-radius","data":{"radius":"8"}})");
    EXPECT_EQ(view("zentavo.popup")->cornerRadius(), 20);

    view("zentavo.overlay")->tap();
    settle();
    EXPECT_TRUE(sdk->isShowingTemplate()) << "a tap beside it closes hand-written messages only";
    postClose();
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_TRUE(memory.views->shown().empty());
    EXPECT_FALSE(page()) << "nothing holds on to the page";
    EXPECT_EQ(traces.back().closedBy, ClosedBy::page);
    trackAndSettle();
    EXPECT_TRUE(sdk->isShowingTemplate()) << "the next one may come";
}

TEST_F(TemplateTest, ABarLeavesTheHostAlone) {
    memory.views->setScreen({0, 0, 390, 844}, {47, 0, 34, 0});
    present({{"template", "floating_bar"}});
    post(R"({"type":"zentavo-cdp-campaign-size","data":{"width":390,"height":80,
             "positionSettings":{"bottom":10,"positionSuffix":"%"}}})");
    EXPECT_EQ(view("zentavo.popup")->frame(), (Rect{0, 646, 390, 80}));
    EXPECT_THAT(memory.views->animations(), ElementsAre(0));
    EXPECT_FALSE(view("zentavo.overlay")->isHidden());
    EXPECT_TRUE(view("zentavo.overlay")->isTouchThrough());
}

TEST_F(TemplateTest, AClickIsFiredCountedAndRedirected) {
    memory.session->on({"GET", "t.example"},
                       testing::ScriptedAnswer{200, R"({"_clk_bc":"c1","_clk_url":"http://s/?utm=u1"})"});
    const Map changes{{"zoneFrequencyCapping", limit("click", 3)}};
    present(changes);
    postClick(R"({"trackingUrl":"http://t.example/c?resp_type=pixel&x=1","route":"shop://product/1"})");
    EXPECT_EQ(memory.session->requests().back()->url.text(), "http://t.example/c?resp_type=json&x=1");
    EXPECT_EQ(store()->string(keys().clkBc), "c1");
    EXPECT_EQ(store()->string(keys().utm), "u1");
    EXPECT_EQ(store()->string("at_freq_capping_zone"), R"({"9":{"timeExpire":1768521600.0,"impression":1,"click":1}})");
    ASSERT_EQ(memory.application->opened().size(), 1U);
    EXPECT_EQ(memory.application->opened()[0].text(), "shop://product/1");
    EXPECT_EQ(traces.back().closedBy, ClosedBy::click);
    EXPECT_FALSE(sdk->isShowingTemplate());

    std::vector<std::string> routes;
    sdk->setHandleChangeRouteTemplate([&](std::string route) { routes.push_back(std::move(route)); });
    present(changes);
    postClick(R"({"route":"any words"})");
    EXPECT_THAT(routes, ElementsAre("any words"));
    present(changes);
    postClick(R"({"trackingUrl":7,"route":{}})");
    EXPECT_EQ(routes.size(), 1U);
    EXPECT_FALSE(sdk->isShowingTemplate()) << "a click closes, whatever it lacks";
    EXPECT_EQ(memory.application->opened().size(), 1U);
}

TEST_F(TemplateTest, ARouteThatIsNoURLIsAFaultThatStillCloses) {
    present();
    int faults = 0;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault&) { ++faults; });
    postClick(R"({"route":""})");
    EXPECT_EQ(faults, 1);
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_TRUE(memory.views->shown().empty());

    Endpoints broken;
    broken.templateHost = "no url";
    sdk->setEndpoints(broken);
    trackAndSettle();
    EXPECT_EQ(faults, 2);
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_TRUE(memory.views->shown().empty());
}

TEST_F(TemplateTest, WhatIsNoMessageIsIgnored) {
    present();
    const Rect before = view("zentavo.popup")->frame();
    for (const char* text :
         {"7", "null", "[]", R"("zentavo-cdp-webview-closed")", "{}", R"({"type":7})", R"({"type":"mt.Action.close"})",
          R"({"type":"zentavo-cdp-campaign-size"})", R"({"type":"zentavo-cdp-campaign-size","data":[1,2]})",
          R"({"type":"zentavo-cdp-campaign-size","data":{"width":300}})",
          R"({"type":"zentavo-cdp-campaign-size","data":{"width":300,"height":"200"}})",
          R"({"type":"zentavo-cdp-campaign-size","data":{"width":300.5,"height":200}})",
          R"({"type":"zentavo-cdp-campaign-change-route"})",
          R"({"type":"zentavo-cdp-campaign-change-route","data":""})"}) {
        post(text);
        EXPECT_TRUE(sdk->isShowingTemplate()) << text;
        EXPECT_EQ(view("zentavo.popup")->frame(), before) << text;
    }
    page()->post("otherHandler", Map{{"type", "zentavo-cdp-webview-closed"}});
    Value deep("bottom");
    for (int i = 0; i < 100; ++i) {
        deep = Map{{"n", std::move(deep)}};
    }
    page()->post("eventHandler", Map{{"type", "zentavo-cdp-webview-closed"}, {"data", deep}});
    page()->post("eventHandler", Map{{"type", "zentavo-cdp-webview-closed"}, {"data", std::string(2U << 20U, 'x')}});
    settle();
    EXPECT_TRUE(sdk->isShowingTemplate());
    for (int i = 0; i < 1000; ++i) {
        page()->post("eventHandler",
                     Map{{"type", "zentavo-cdp-campaign-size"}, {"data", Map{{"width", i}, {"height", i}}}});
    }
    settle();
    EXPECT_EQ(view("zentavo.popup")->frame().width, 999);
}

TEST_F(TemplateTest, FailedLoadsScriptsAndDeadProcessesAreSurvived) {
    sdk->setDebug(true);
    present();
    page()->failLoad("no route to host");
    settle();
    EXPECT_TRUE(page()->evaluated().empty()) << "a failed load runs no script";
    EXPECT_TRUE(sdk->isShowingTemplate());
    page()->setResult(Error{"ReferenceError: show"});
    page()->finishLoad();
    settle();
    EXPECT_THAT(logged(), Contains("JavaScript evaluation error: ReferenceError: show"));
    page()->killProcess();
    settle();
    EXPECT_EQ(traces.back().closedBy, ClosedBy::pageProcessDied);
    EXPECT_FALSE(sdk->isShowingTemplate());
}

TEST_F(TemplateTest, AMessageGoesWithItsWindow) {
    present();
    memory.views->closeWindow();
    settle();
    EXPECT_EQ(traces.back().closedBy, ClosedBy::windowGone);
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_FALSE(page()) << "nothing holds on to it";
}

TEST_F(TemplateTest, OfTwoDeliveriesOneIsShownAndOneCounted) {
    offer({campaign(1, {{"zoneFrequencyCapping", limit("impression", 9)}})});
    sdk->track(CDPEvent("a"));
    sdk->track(CDPEvent("b"));
    settle();
    EXPECT_EQ(memory.webViews->made(), 1U);
    EXPECT_EQ(memory.views->shown().size(), 2U) << "one overlay, one popup";
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[0].outcome, Outcome::presented);
    EXPECT_EQ(traces[1].outcome, Outcome::alreadyShowing);
    EXPECT_EQ(store()->string("at_freq_capping_zone"), R"({"9":{"timeExpire":1768521600.0,"impression":1}})");

    // A host that clears the flag itself still sees one at a time.
    sdk->setIsShowingTemplate(false);
    trackAndSettle();
    EXPECT_EQ(memory.views->shown().size(), 2U);
    EXPECT_TRUE(sdk->isShowingTemplate());
    EXPECT_EQ(traces[2].closedBy, ClosedBy::replaced);
}

TEST_F(TemplateTest, AThirdShowIsCappedUntilMidnight) {
    sdk->setDebug(true);
    const Map twice{{"frequencyCapping", limit("impression", 2)}};
    for (int i = 0; i < 2; ++i) {
        present(twice);
        postClose();
    }
    trackAndSettle();
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_THAT(logged(), Contains("Frequency via story setup 2, cached 2"));
    ASSERT_TRUE(traces.back().campaigns.at(0).capped);
    EXPECT_THAT(traces.back().text(), HasSubstr("capped by story: impression 2 of 2; nothing to show"));
    memory.queues->advance(12h);
    trackAndSettle();
    EXPECT_TRUE(sdk->isShowingTemplate());
}

TEST_F(TemplateTest, WhereNothingCanBeShownTheFlagStaysFree) {
    offer({campaign(1)});
    memory.webViews->refuse();
    trackAndSettle();
    memory.webViews->refuse(false);
    memory.views->setWindow(false);
    trackAndSettle();
    memory.attachViews(false);
    trackAndSettle();
    ASSERT_EQ(traces.size(), 3U);
    for (const DeliveryTrace& each : traces) {
        EXPECT_EQ(each.outcome, Outcome::noUserInterface);
        EXPECT_FALSE(each.problem.empty());
    }
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_TRUE(memory.views->shown().empty());
}

TEST_F(TemplateTest, AnInstanceThatGoesTakesItsMessageDown) {
    present();
    Zentavo::setShared(nullptr);
    sdk = nullptr;
    settle();
    EXPECT_TRUE(memory.views->shown().empty());
    EXPECT_FALSE(page());
}

} // namespace
} // namespace zentavo
