#include "tests/inapp/InAppTest.h"

namespace zentavo {
namespace {

using platform::Rect;
using ::testing::Contains;
using ClosedBy = DeliveryTrace::ClosedBy;

/// Hand-written messages.
class TemplateCodeModeTest : public InAppTest {
protected:
    TemplateCodeModeTest() {
        memory.attachViews();
        trace();
    }

    std::shared_ptr<testing::MemoryWebView> page() { return memory.webViews->last(); }
    std::shared_ptr<testing::MemoryView> view(const char* name) { return memory.views->named(name); }
    void layOut(const std::string& answer) {
        memory.session->on({"POST", "", "/interaction/media-template/info"}, testing::ScriptedAnswer{200, answer});
    }
    void fill() {
        memory.session->on({"POST", "", "/interaction/media-template/view-info"},
                           testing::ScriptedAnswer{200, R"({"data":{"content":{"html":"<p>hi</p>"},"trackingUrls":{
                               "impression":"http://t.example/i","viewable":"http://t.example/v"}}})"});
    }
    void present(const char* type = "popup") {
        offer({campaign(4711, {{"template", type}, {"designMode", "CODE_MODE"}})});
        trackAndSettle();
        ASSERT_TRUE(page());
    }
    void post(const std::string& text) {
        page()->post("eventHandler", json::read(text).value());
        settle();
    }
};

TEST_F(TemplateCodeModeTest, AsksForItsLayoutAndIsLaidOut) {
    layOut(R"({"data":{"codeModeSettings":{"width":200,"height":100}}})");
    fill();
    present();
    const auto request = sent("/interaction/media-template/info").at(0);
    EXPECT_EQ(request->url.queryItems(), (std::vector<QueryItem>{{"portal_id", "1001"}, {"prop_id", "555"}}));
    Map expected = bodyOf(*sent("/interaction/v2").at(0));
    expected.merge({{"selected_story_id", 4711},
                    {"selected_variant_id", 5711},
                    {"selected_zone_id", 9},
                    {"selected_view_id", "optin"}});
    EXPECT_EQ(bodyOf(*request), expected);
    EXPECT_EQ(view("zentavo.popup")->frame(), (Rect{95, 372, 200, 100}));

    view("zentavo.overlay")->tap();
    settle();
    EXPECT_EQ(traces.back().closedBy, ClosedBy::overlay);
    EXPECT_TRUE(memory.views->shown().empty());
    EXPECT_FALSE(page());
}

TEST_F(TemplateCodeModeTest, WithoutALayoutItIsAsLargeAsItsPage) {
    for (const char* answer : {"garbage", "{}", R"({"data":{"options":{"positionSettings":{"right":10}}}})"}) {
        layOut(answer);
        present();
        page()->setResult(Value(List{300, 400}));
        page()->finishLoad();
        settle();
        EXPECT_EQ(view("zentavo.popup")->frame(), (Rect{45, 222, 300, 400})) << answer;
        EXPECT_THAT(page()->evaluated(), Contains("show(4711)"));
        post(R"({"type":"mt.Action.close"})");
        EXPECT_EQ(traces.back().closedBy, ClosedBy::page);
    }
}

TEST_F(TemplateCodeModeTest, ALayoutWithoutASizeStillSaysWhere) {
    for (const char* type : {"popup", "floating_bar"}) {
        layOut(R"({"data":{"options":{"floatingBarPosition":"top","positionSettings":{"top":"20","left":10}}}})");
        present(type);
        page()->setResult(Value(List{300, 80}));
        page()->finishLoad();
        settle();
        EXPECT_EQ(view("zentavo.popup")->frame(), (Rect{10, 20, 300, 80})) << type;
        EXPECT_EQ(page()->evaluated().back(), "resizeView();");
        post(R"({"type":"mt.Action.close"})");
    }
}

TEST_F(TemplateCodeModeTest, AMeasuredMessageIsMeasuredAgainInAnotherWindow) {
    present();
    page()->setResult(Value(List{390, 400}));
    page()->finishLoad();
    settle();
    Rect measuredIn;
    memory.platform()->userInterface()->mainQueue->async([&] {
        page()->setResult(Value(List{200, 780}));
        memory.views->setScreen({0, 0, 200, 800});
        memory.platform()->userInterface()->mainQueue->async([&] { measuredIn = view("zentavo.popup")->frame(); });
    });
    settle();
    EXPECT_EQ(measuredIn.width, 200) << "no page is narrower than it was made";
    EXPECT_EQ(view("zentavo.popup")->frame(), (Rect{0, 10, 200, 780}));
}

TEST_F(TemplateCodeModeTest, ABarWhoseContentNeverComesIsClosedByATap) {
    present("floating_bar");
    EXPECT_EQ(view("zentavo.overlay")->background().alpha, 0) << "a bar dims nothing";
    view("zentavo.overlay")->tap();
    settle();
    EXPECT_EQ(traces.back().closedBy, ClosedBy::overlay);
    EXPECT_FALSE(sdk->isShowingTemplate());
}

TEST_F(TemplateCodeModeTest, ItsContentIsAskedForWithASignatureOverExactlyWhatIsSent) {
    fill();
    present();
    const auto request = sent("/interaction/media-template/view-info").at(0);
    EXPECT_EQ(bodyOf(*request), bodyOf(*sent("/interaction/media-template/info").at(0)));
    const auto query = request->url.queryItems();
    ASSERT_EQ(query.size(), 3U);
    EXPECT_EQ(query[0], (QueryItem{"ts", "1768478400000"}));
    EXPECT_EQ(query[1], (QueryItem{"sn", "c2lnbmF0dXJl"}));
    EXPECT_EQ(query[2].name, "ri");
    EXPECT_EQ(query[2].value->size(), 36U);
    const auto signing = memory.keyServices->signings().at(0);
    EXPECT_EQ(std::string(signing.message.begin(), signing.message.end()),
              *request->body + "1768478400000" + *query[2].value);
    EXPECT_EQ(signing.scheme, platform::RSASignature::pkcs1SHA256);

    EXPECT_EQ(page()->html(), "<p>hi</p>");
    EXPECT_EQ(sent("/i").size(), 1U);
    EXPECT_TRUE(sent("/v").empty());
    page()->finishLoad();
    settle();
    EXPECT_EQ(sent("/v").size(), 1U);
}

TEST_F(TemplateCodeModeTest, WithoutASignatureItIsDropped) {
    sdk->setDebug(true);
    memory.keyServices->setSignature(Error{"the card is not in the reader"});
    offer({campaign(1, {{"designMode", "CODE_MODE"}})});
    trackAndSettle();
    EXPECT_THAT(logged(), Contains("In-app message: its content cannot be asked for: the card is not in the reader"));
    EXPECT_TRUE(sent("/interaction/media-template/view-info").empty());
    EXPECT_EQ(traces.back().closedBy, ClosedBy::noContent);
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_TRUE(memory.views->shown().empty());

    memory.keyServices->refuseKeys(Error{"no keys today"});
    trackAndSettle();
    EXPECT_THAT(logged(), Contains(::testing::EndsWith("no keys today")));
    memory.keyServices->refuseKeys(std::nullopt);
    memory.keyServices->setSignature(platform::Bytes{1});
    trackAndSettle();
    EXPECT_TRUE(sdk->isShowingTemplate());
}

TEST_F(TemplateCodeModeTest, APageTracksEventsButNamesNoCustomer) {
    present();
    memory.session->clear();
    sdk->setCustomerProperties("c1", {});
    post(R"({"type":"mt.Action.track","data":{"eventData":{"en":"vote","dims":{"users":{"age":30},
             "customers":{"customer_id":42}},"extra":{"answer":"a"},"items":[{"sku":"A1"},7]}}})");
    const Map body = events().at(0);
    EXPECT_EQ(*body.find("en"), "vote");
    EXPECT_EQ(*body.find("items"), Value(List{Map{{"sku", "A1"}}}));
    EXPECT_EQ(*body.find("extra")->asMap()->find("answer"), "a");
    EXPECT_EQ(*body.find("dims")->asMap()->find("users"), Value(Map{{"age", 30}}));
    EXPECT_EQ(sdk->getCustomerId(), "c1");
    for (const char* text : {R"({"type":"mt.Action.track"})", R"({"type":"mt.Action.track","data":{"eventData":[]}})",
                             R"({"type":"zentavo-cdp-webview-closed"})"}) {
        post(text);
    }
    EXPECT_EQ(events().size(), 1U);
    EXPECT_TRUE(sdk->isShowingTemplate());
}

TEST_F(TemplateCodeModeTest, ARedirectIsAClick) {
    std::vector<std::string> routes;
    sdk->setHandleChangeRouteTemplate([&](std::string route) { routes.push_back(std::move(route)); });
    const std::string click = R"({"href":"shop://1","trackingUrl":"http://t.example/?resp_type=pixel"})";
    const std::string attribute = json::write(Value(click)).value();
    for (const std::string& members :
         {"\"vtx902-click-data\":" + click, "\"data\":{\"vtx902-click-data\":" + click + "}",
          "\"vtx902-click-data\":" + attribute}) {
        present();
        post("{\"type\":\"mt.Action.redirect\"," + members + "}");
        EXPECT_EQ(traces.back().closedBy, ClosedBy::click) << members;
        EXPECT_EQ(memory.session->requests().back()->url.text(), "http://t.example/?resp_type=json");
    }
    EXPECT_EQ(routes.size(), 3U);
    present();
    post(R"({"type":"mt.Action.redirect","vtx902-click-data":"no json"})");
    EXPECT_TRUE(sdk->isShowingTemplate());
}

TEST_F(TemplateCodeModeTest, AnswersThatComeTooLateMeetNobody) {
    memory.session->hold();
    offer({campaign(1, {{"designMode", "CODE_MODE"}})});
    sdk->track(CDPEvent("e"));
    memory.session->answer(0, {200, "{}"});
    settle();
    memory.session->answer(1, {200, answer({campaign(1, {{"designMode", "CODE_MODE"}})})});
    settle();
    ASSERT_TRUE(page());
    post(R"({"type":"mt.Action.close"})");
    memory.session->answer(2, {200, R"({"data":{"codeModeSettings":{}}})"});
    settle();
    EXPECT_FALSE(page());
}

} // namespace
} // namespace zentavo
