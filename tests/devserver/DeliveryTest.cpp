#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devserver/Campaigns.h"
#include "devserver/Options.h"
#include "tests/devserver/SampleEvent.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

const std::string query = "?portal_id=1000&prop_id=555";

Map asked(const std::string& event) {
    Map body = sampleEvent(event);
    body.set("format", "json");
    return body;
}

Map selected(std::int64_t story, std::int64_t variant, std::int64_t zone) {
    Map body = asked("promo_code_mode");
    body.merge({{"selected_story_id", story},
                {"selected_variant_id", variant},
                {"selected_zone_id", zone},
                {"selected_view_id", "optin"}});
    return body;
}

class DeliveryTest : public ::testing::Test, protected RunningServer {
protected:
    httplib::Result post(const std::string& target, const Map& body) const {
        return client().Post(target, text(body), "application/json");
    }
    httplib::Result deliver(const std::string& event) const { return post("/interaction/v2" + query, asked(event)); }
    Map offered(const std::string& event) const { return *bodyOf(deliver(event)).find("webContents")->asMap(); }
    static std::vector<std::string> names(const Map& map) {
        std::vector<std::string> keys;
        for (const auto& [key, value] : map) {
            keys.push_back(key);
        }
        return keys;
    }
    static std::vector<std::string> problems(const httplib::Result& answer) {
        std::vector<std::string> list;
        const Map body = bodyOf(answer);
        const Value* found = body.find("problems");
        for (const Value& problem : found != nullptr ? *found->asList() : List()) {
            list.push_back(*problem.asString());
        }
        return list;
    }
    /// Delivery `index` of the list, the newest first.
    Map delivery(std::size_t index = 0) const {
        const Map answer = bodyOf(client().Get("/_dev/deliveries"));
        return *answer.find("deliveries")->asList()->at(index).asMap();
    }
    static std::string verdict(const Map& delivery) { return *delivery.find("verdict")->asString(); }
};

TEST_F(DeliveryTest, AnEventGetsTheCampaignsThatWaitForItInTheSDKsShape) {
    const Map full = offered("promo_full_screen");
    ASSERT_THAT(names(full), ElementsAre("promo_full_screen"));
    const Map& content = *full.find("promo_full_screen")->asMap();
    EXPECT_EQ(*content.find("template"), "full_screen");
    EXPECT_EQ(*content.find("storyId"), 9001);
    EXPECT_THAT(*content.find("javascript")->asString(),
                AllOf(StartsWith("showCampaign({"), HasSubstr("/track/click?story=9001&delivery=1&resp_type=pixel"),
                      Not(HasSubstr("{{"))));
    EXPECT_THAT(offered("view_product"), IsEmpty());
    EXPECT_THAT(names(offered("promo_never")), ElementsAre("promo_inline", "promo_slide_in"));
    EXPECT_EQ(offered("promo_all").size(), 10U);

    Map sandbox = asked("promo_full_screen");
    sandbox.set("portal_id", "33167");
    EXPECT_EQ(post("/sandbox/interaction/v2?portal_id=33167&prop_id=555", sandbox)->status, 200);
}

TEST_F(DeliveryTest, TheCatchAllIsSwitched) {
    EXPECT_EQ(client().Post("/_dev/campaigns?catch_all=1")->status, 200);
    EXPECT_THAT(names(offered("view_product")), ElementsAre("any_event"));
    EXPECT_EQ(client().Post("/_dev/campaigns?catch_all=0")->status, 200);
    EXPECT_THAT(offered("view_product"), IsEmpty());
    EXPECT_EQ(client().Post("/_dev/campaigns")->status, 400);
    EXPECT_EQ(client().Post("/_dev/campaigns?catch=1")->status, 400);
}

TEST_F(DeliveryTest, WhatIsWrongIsSaidAndListed) {
    EXPECT_THAT(problems(post("/interaction/v2" + query, sampleEvent("promo_full_screen"))),
                ElementsAre("format is missing"));
    EXPECT_EQ(verdict(delivery()), "nothing was offered: format is missing");
    Map html = asked("promo_full_screen");
    html.set("format", "html");
    EXPECT_THAT(problems(post("/interaction/v2" + query, html)), ElementsAre("format is \"html\"; expected \"json\""));
    EXPECT_THAT(problems(post("/interaction/v2?portal_id=1000", asked("promo_full_screen"))),
                ElementsAre("query item prop_id is missing"));
    EXPECT_THAT(problems(post("/sandbox/interaction/v2" + query, asked("e"))),
                ElementsAre("portal \"1000\" belongs to production: /interaction/v2"));
    EXPECT_THAT(problems(post("/interaction/media-template/info" + query, asked("e"))),
                ElementsAre("selected_story_id is missing", "selected_variant_id is missing",
                            "selected_zone_id is missing", "selected_view_id is missing"));
    EXPECT_THAT(problems(post("/interaction/media-template/info" + query, selected(9008, 1, 703))),
                ElementsAre("selected_variant_id is 1; story 9008 was offered with 90081"));
}

TEST_F(DeliveryTest, TheLayoutOfAHandWrittenCampaignIsTold) {
    deliver("promo_code_mode");
    const Map answer = bodyOf(post("/interaction/media-template/info" + query, selected(9008, 90081, 703)));
    EXPECT_EQ(*answer.find("data")->asMap()->find("codeModeSettings")->asMap()->find("width"), 400);
    EXPECT_EQ(post("/interaction/media-template/info" + query, selected(9001, 90011, 701))->status, 404);
    EXPECT_THAT(verdict(delivery()), HasSubstr("its layout was asked for, its content was not"));
}

TEST_F(DeliveryTest, UnsignedRequestsForContentAreRefusedWithTheReason) {
    deliver("promo_code_mode");
    const std::int64_t now =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    const auto ask = [&](const std::string& ts, const std::string& sn, const std::string& ri) {
        return problems(post("/interaction/media-template/view-info?ts=" + ts + "&sn=" + sn + "&ri=" + ri,
                             selected(9008, 90081, 703)));
    };
    const std::string time = std::to_string(now);
    const std::string uuid = "7C9E6679-7425-40DE-944B-E07FC1F90AE7";
    const std::string made(342, 'A'); // 256 bytes of zeros
    EXPECT_THAT(ask(time, "!", uuid), ElementsAre("sn is no base64 text"));
    EXPECT_THAT(ask(time, "AAAA", uuid), ElementsAre("sn has 3 bytes; a signature by this build's key has 256"));
    EXPECT_THAT(ask(time, made + "%3D%3D", uuid), ElementsAre(HasSubstr("another key, over another text")));
    EXPECT_THAT(
        ask(std::to_string(now / 1000), "AAAA", "7c9e6679-7425-40de-944b-e07fc1f90ae7"),
        ElementsAre(HasSubstr("are these seconds?"), HasSubstr("expected a UUID in upper case"), HasSubstr("sn")));
    EXPECT_THAT(ask("soon", "AAAA", uuid), Contains("ts is \"soon\"; expected milliseconds since 1970"));
    EXPECT_THAT(ask("9999999999999999999", "AAAA", uuid), Contains(HasSubstr("expected milliseconds")));
    EXPECT_THAT(problems(post("/interaction/media-template/view-info", selected(9008, 90081, 703))),
                ElementsAre("query item ts is missing", "query item sn is missing", "query item ri is missing"));
    EXPECT_THAT(verdict(delivery()), HasSubstr("its content was refused, query item ts is missing"));
}

TEST_F(DeliveryTest, TrackingURLsTellWhatBecameOfADelivery) {
    deliver("promo_centred");
    deliver("promo_never");
    deliver("view_product");
    EXPECT_EQ(verdict(delivery(0)), "nothing was offered: no campaign waits for this event");
    EXPECT_EQ(verdict(delivery(1)), "not shown: apps leave out their types");
    EXPECT_THAT(verdict(delivery(2)), HasSubstr("nothing heard since"));

    const auto pixel = client().Get("/track/impression?story=9007&delivery=1&resp_type=pixel");
    EXPECT_EQ(pixel->get_header_value("Content-Type"), "image/gif");
    EXPECT_EQ(pixel->body.size(), 43U);
    EXPECT_THAT(pixel->body, StartsWith("GIF89a"));
    EXPECT_EQ(verdict(delivery(2)), "promo_centred: shown");
    const Map click = bodyOf(client().Get("/track/click?story=9007&delivery=1&resp_type=json"));
    EXPECT_EQ(*click.find("_clk_bc"), "click-1");
    EXPECT_THAT(*click.find("_clk_url")->asString(), HasSubstr("/landing?utm=in_app_promo_centred&atm=click-1"));
    EXPECT_EQ(verdict(delivery(2)), "promo_centred: shown and clicked");
    const Map shown = delivery(2);
    const Map& offer = *shown.find("campaigns")->asList()->front().asMap();
    EXPECT_EQ(*offer.find("impression"), 1);
    EXPECT_EQ(*offer.find("click"), 1);
    EXPECT_EQ(*offer.find("limits"), "zone: 3 × click hourly");

    EXPECT_EQ(client().Get("/track/viewable?story=9007&delivery=99&resp_type=json")->status, 200) << "long forgotten";
    EXPECT_THAT(problems(client().Get("/track/click?story=1&resp_type=json")), ElementsAre("there is no story 1"));
    EXPECT_THAT(problems(client().Get("/track/click?story=9007")), ElementsAre("resp_type is missing"));
    EXPECT_EQ(client().Get("/track/click?story=9007&resp_type=xml")->status, 400);
    EXPECT_EQ(client().Post("/track/click")->status, 405);
}

TEST_F(DeliveryTest, AnAppsTraceSaysWhatTheServerCannotSee) {
    const auto trace = [](const std::string& event, const std::string& outcome, List campaigns, Map more = {}) {
        Map record{{"event", event}, {"received_bytes", 12}, {"outcome", outcome}, {"campaigns", std::move(campaigns)}};
        record.merge(more);
        return record;
    };
    const auto numberOf = [](const httplib::Result& answer) { return *bodyOf(answer).find("delivery"); };
    const Map capped{{"level", "story"}, {"event", "impression"}, {"counter", 2}, {"limit", 2}};
    const Map story{{"story_id", 9001}, {"template", "full_screen"}};
    Map cappedStory = story;
    cappedStory.set("capped", capped);

    deliver("promo_full_screen");
    deliver("promo_full_screen");
    deliver("promo_gamified");
    EXPECT_EQ(numberOf(post("/_dev/trace", trace("promo_full_screen", "nothingToShow", List{cappedStory}))), 2);
    EXPECT_EQ(verdict(delivery(1)), "not shown: story 9001 is capped by story: impression 2 of 2");
    EXPECT_EQ(*delivery(1).find("campaigns")->asList()->at(0).asMap()->find("left_out"),
              "capped by story: impression 2 of 2");
    // The one before it, presented and then closed.
    EXPECT_EQ(numberOf(post("/_dev/trace", trace("promo_full_screen", "presented", List{story}, {{"chosen", 0}}))), 1);
    const Map closed =
        trace("promo_full_screen", "presented", List{story}, {{"chosen", 0}, {"closed_by", "windowGone"}});
    EXPECT_EQ(numberOf(post("/_dev/trace", closed)), 1);
    EXPECT_EQ(verdict(delivery(2)), "promo_full_screen: shown, then closed with the window");
    EXPECT_EQ(post("/_dev/trace", closed)->status, 404) << "it is closed already";
    EXPECT_EQ(post("/_dev/trace", trace("promo_gamified", "alreadyShowing", List{story}))->status, 404);
    EXPECT_EQ(numberOf(post("/_dev/trace", trace("promo_gamified", "undecodable", {}, {{"problem", "a: odd"}}))), 3);
    EXPECT_EQ(verdict(delivery(0)), "not shown: the app cannot read the answer, a: odd");
}

TEST_F(DeliveryTest, WhatIsNoTraceIsRefusedAndItsMistakesAreNamed) {
    const httplib::Result wrong =
        post("/_dev/trace", Map{{"event", "e"},
                                {"received_bytes", "many"},
                                {"campaigns", List{Map{{"story_id", 1}, {"template", "popup"}}}},
                                {"outcome", "presented"}});
    EXPECT_EQ(wrong->status, 400);
    EXPECT_THAT(problems(wrong), ElementsAre(HasSubstr("received_bytes")));
    const Map capped{{"level", "moon"}, {"event", "click"}, {"counter", 1}, {"limit", 1}};
    EXPECT_THAT(
        problems(post("/_dev/trace",
                      Map{{"event", "e"},
                          {"received_bytes", 1},
                          {"outcome", "tired"},
                          {"chosen", 1},
                          {"campaigns", List{Map{{"story_id", 1}, {"template", "popup"}, {"capped", capped}}}}})),
        ElementsAre(HasSubstr("outcome is \"tired\""), HasSubstr("level is \"moon\""), HasSubstr("chosen is 1")));
    EXPECT_EQ(client().Post("/_dev/trace", "{", "application/json")->status, 400);
    EXPECT_EQ(client().Post("/_dev/trace", std::string(300'000, ' '), "application/json")->status, 400);
}

TEST_F(DeliveryTest, ContentForHostsIsFreeInForm) {
    Map body = asked("promo_gamified");
    const Map answer = bodyOf(post("/interaction/app" + query, body));
    EXPECT_EQ(*answer.find("contents")->asList()->front().asMap()->find("storyId"), 9002);
    body.set("asm_journey_id", "9001");
    EXPECT_EQ(*bodyOf(post("/interaction/app" + query, body)).find("contents"), Value(List()));
    EXPECT_EQ(post("/interaction/app" + query, {{"anything", 1}})->status, 200);
    body.remove("uid");
    EXPECT_THAT(problems(post("/interaction/app" + query, body)), ElementsAre("uid is missing"));
    EXPECT_THAT(problems(post("/sandbox/interaction/app" + query, {{"format", "json"}})),
                ElementsAre("there is no sandbox for /interaction/app"));
}

TEST_F(DeliveryTest, ThePageOfTheTemplateHostNeedsItsQuery) {
    const std::string path = "/html/index-mobile-border.html";
    const auto page = client().Get(path + "?v=2225&portalId=1000&propsId=555");
    EXPECT_THAT(page->get_header_value("Content-Type"), StartsWith("text/html"));
    for (const char* word : {"zentavo-cdp-campaign-size", "zentavo-cdp-webview-closed", "resizeView",
                             "zentavo-cdp-campaign-change-route", "zentavo-cdp-campaign-change-border-radius"}) {
        EXPECT_THAT(page->body, HasSubstr(word));
    }
    EXPECT_EQ(client().Get(path)->status, 400);
    EXPECT_THAT(client().Get("/_dev/preview?campaign=promo_centred")->body, HasSubstr("showCampaign({"));
    EXPECT_EQ(client().Get("/_dev/preview?campaign=nothing")->status, 404);
}

TEST_F(DeliveryTest, AClientCannotMakeTheServerGrowOrPutItsWordsIntoScripts) {
    const httplib::Headers odd{{"Host", "\"});alert(1);//"}};
    const auto answer = client().Post("/interaction/v2" + query, odd, text(asked("promo_centred")), "application/json");
    EXPECT_THAT(answer->body, Not(HasSubstr("alert(1)")));
    for (int i = 0; i < 510; ++i) {
        deliver(std::string(1'000, 'x'));
    }
    const Map list = bodyOf(client().Get("/_dev/deliveries"));
    EXPECT_EQ(list.find("deliveries")->asList()->size(), 500U);
    EXPECT_LT(delivery().find("event")->asString()->size(), 300U);
    EXPECT_EQ(client().Delete("/_dev/deliveries")->status, 200);
    EXPECT_EQ(*bodyOf(client().Get("/_dev/deliveries")).find("deliveries"), Value(List()));
}

class CampaignFilesTest : public ::testing::Test {
protected:
    CampaignFilesTest() {
        std::string pattern = ::testing::TempDir() + "zentavo-campaigns-XXXXXX";
        folder = mkdtemp(pattern.data());
    }
    ~CampaignFilesTest() override { std::filesystem::remove_all(folder); }
    void write(const std::string& name, const std::string& content) const { std::ofstream(folder / name) << content; }
    std::string refusal() const {
        const auto campaigns = Campaigns::read(folder);
        return campaigns ? "" : campaigns.error().message;
    }
    static std::string campaign(const std::string& more, int story = 1) {
        return R"({"description":"d","events":["e"],"webContent":{"template":"popup","designMode":"CODE_MODE","storyId":)" +
               std::to_string(story) + R"(,"variantId":2,"destinationId":3,"zoneId":4})" + more + "}";
    }
    std::filesystem::path folder;
};

TEST_F(CampaignFilesTest, AFolderTakesThePlaceOfTheBuiltInOnes) {
    write("mine.json", campaign(R"(,"html":"mine.html")"));
    write("mine.html", "<p>{{story}} {{other}} {{</p>");
    const auto campaigns = Campaigns::read(folder);
    ASSERT_TRUE(campaigns) << campaigns.error().message;
    ASSERT_EQ(campaigns->all().size(), 1U);
    EXPECT_EQ(filled(*campaigns->find(1)->html, {"http://h", 7, 1}), "<p>1 {{other}} {{</p>");
    EXPECT_EQ(campaigns->find(2), nullptr);
}

TEST_F(CampaignFilesTest, TheServerTakesFolderAndCatchAllFromItsSettings) {
    const std::array<const char*, 3> arguments{"--catch-all", "--campaigns", "dir"};
    EXPECT_TRUE(Options::parse(arguments)->catchAll);
    EXPECT_EQ(Options::parse(arguments)->campaignFolder, "dir");
    DevServer::Settings settings;
    settings.campaignFolder = folder;
    settings.catchAll = true;
    write("mine.json", campaign(""));
    const RunningServer running(settings);
    const Map answer = bodyOf(running.client().Get("/_dev/campaigns"));
    EXPECT_EQ(*answer.find("catch_all"), true);
    EXPECT_EQ(answer.find("campaigns")->asList()->size(), 1U);
    write("mine.json", "[]");
    EXPECT_THAT(DevServer::open(settings).error().message, StartsWith("the campaigns cannot be read: mine.json"));
}

TEST_F(CampaignFilesTest, AFileWithAMistakeIsNamed) {
    write("a.json", "{");
    EXPECT_THAT(refusal(), HasSubstr("a.json: not JSON"));
    write("a.json", R"({"description":"d","events":["e"],"webContent":{"storyId":"1"}})");
    EXPECT_EQ(refusal(), "a.json: webContent.template is missing");
    write("a.json", campaign(R"(,"html":"../secret.html")"));
    EXPECT_EQ(refusal(), "a.json: html: there is no file \"../secret.html\"");
    write("a.json", campaign(""));
    write("b.json", campaign(""));
    EXPECT_EQ(refusal(), "b.json: storyId is 1, which another campaign has");
    std::filesystem::remove_all(folder);
    EXPECT_THAT(refusal(), HasSubstr("cannot be read"));
}

} // namespace
} // namespace zentavo::devserver
