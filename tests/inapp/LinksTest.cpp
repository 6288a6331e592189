#include "tests/inapp/InAppTest.h"

namespace zentavo {
namespace {

class LinksTest : public InAppTest {
protected:
    static URL url(const std::string& text) { return *URL::parse(text); }
    std::string stored(const std::string& key) { return store()->string(key).value_or("nothing"); }
};

TEST_F(LinksTest, ADeepLinkReplacesBothAttributions) {
    sdk->handleDeeplinkURL(url("shop://open?utm=mail%201&atm=a1&x=y"));
    EXPECT_EQ(stored(keys().utm), "mail 1");
    EXPECT_EQ(stored(keys().atm), "a1");
    sdk->handleDeeplinkURL(url("shop://open?utm=web"));
    EXPECT_EQ(stored(keys().utm), "web");
    EXPECT_EQ(stored(keys().atm), "nothing");
    sdk->handleDeeplinkURL(url("shop://open?utm"));
    EXPECT_EQ(stored(keys().utm), "nothing");
    sdk->handleDeeplinkURL(url("shop://open?utm=again"));
    sdk->handleDeeplinkURL(url("shop://open"));
    EXPECT_EQ(stored(keys().utm), "nothing");
    restart();
    sdk->handleDeeplinkURL(url("shop://open?utm=before-activation"));
}

TEST_F(LinksTest, AClicksAnswerIsStoredAndOnlyAnObjectCompletes) {
    const URL tracking = url("http://t.example/click?resp_type=json&a=b+c");
    struct Case {
        testing::ScriptedAnswer answer;
        int completions;
        const char* clickId;
        const char* utm;
    };
    const std::vector<Case> cases{
        {{200, R"({"_clk_bc":"c1","_clk_url":"https://shop.example/?utm=u1&atm=a1"})"}, 1, "c1", "u1"},
        {{200, R"({"_clk_bc":7,"_clk_url":""})"}, 1, "c1", "u1"},
        {{200, R"({"_clk_url":"https://shop.example/?utm=u2"})"}, 1, "c1", "u2"},
        {{500, R"({"_clk_bc":"c2"})"}, 1, "c2", "u2"},
        {{200, "[]"}, 0, "c2", "u2"},
        {{200, "pixel"}, 0, "c2", "u2"},
        {{200, ""}, 0, "c2", "u2"},
        {testing::ScriptedAnswer::failure(platform::URLErrorKind::cannotConnect), 0, "c2", "u2"},
    };
    for (const Case& each : cases) {
        memory.session->clear();
        memory.session->setDefault(each.answer);
        int completions = 0;
        sdk->handleTrackingURL(tracking, [&] { ++completions; });
        settle();
        EXPECT_EQ(completions, each.completions) << each.answer.body;
        EXPECT_EQ(stored(keys().clkBc), each.clickId) << each.answer.body;
        EXPECT_EQ(stored(keys().utm), each.utm) << each.answer.body;
        const auto request = memory.session->requests().at(0);
        EXPECT_EQ(request->method, "GET");
        EXPECT_EQ(request->url, tracking);
        EXPECT_TRUE(request->headers.empty());
    }
    EXPECT_EQ(stored(keys().atm), "nothing");
}

TEST_F(LinksTest, AViewIsFiredAndForgotten) {
    memory.session->setDefault({200, R"({"_clk_bc":"c1"})"});
    sdk->handleViewTrackingUrl(url("http://t.example/view"));
    settle();
    EXPECT_EQ(memory.session->requests().at(0)->method, "GET");
    EXPECT_EQ(stored(keys().clkBc), "nothing");
}

TEST_F(LinksTest, MediaIsAskedForWithTheEventsBody) {
    memory.session->on({"POST", "", "/interaction/app"}, testing::ScriptedAnswer{200, R"({"title":"Hi"})"});
    std::vector<Map> received;
    const auto keep = [&](Map content) { received.push_back(std::move(content)); };
    const CDPEvent event("view_home");
    sdk->getMediaJson(event, keep);
    sdk->getMediaJson(event, "4711", keep);
    settle();
    ASSERT_EQ(received.size(), 2U);
    EXPECT_EQ(received[0], (Map{{"title", "Hi"}}));
    const auto requests = sent("/interaction/app");
    EXPECT_EQ(requests.at(0)->url.queryItems(), (std::vector<QueryItem>{{"portal_id", "1001"}, {"prop_id", "555"}}));
    Map expected = event.bodyMap();
    expected.set("format", "json");
    EXPECT_EQ(bodyOf(*requests[0]), expected);
    expected.set("asm_journey_id", "4711");
    EXPECT_EQ(bodyOf(*requests[1]), expected);

    for (const char* body : {"", "[]", "garbage"}) {
        memory.session->on({"POST", "", "/interaction/app"}, testing::ScriptedAnswer{200, body});
        sdk->processGetMediaJson({{"own", true}}, keep);
        settle();
    }
    EXPECT_EQ(received.size(), 2U);
    EXPECT_EQ(bodyOf(*sent("/interaction/app").back()), (Map{{"own", true}}));
}

} // namespace
} // namespace zentavo
