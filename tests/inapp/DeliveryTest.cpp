#include <limits>
#include <stdexcept>

#include "examples/support/TracePost.h"
#include "tests/inapp/InAppTest.h"
#include "zentavo/inapp/CampaignChoice.h"

namespace zentavo {
namespace {

using Outcome = DeliveryTrace::Outcome;
using ::testing::Contains;
using ::testing::HasSubstr;

class DeliveryTest : public InAppTest {};

TEST_F(DeliveryTest, AnAnsweredEventIsHandedOverWithItsSession) {
    memory.session->on({"POST", "", "/event"}, testing::ScriptedAnswer{200, R"({"session_id":"s1"})"});
    trackAndSettle();
    const auto requests = sent("/interaction/v2");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0]->method, "POST");
    EXPECT_EQ(requests[0]->url.queryItems(), (std::vector<QueryItem>{{"portal_id", "1001"}, {"prop_id", "555"}}));
    Map expected = events().at(0);
    expected.set("format", "json");
    expected.find("extra")->asMap()->set("session_id", "s1");
    EXPECT_EQ(bodyOf(*requests[0]), expected);
    EXPECT_FALSE(store()->object(keys().sessionId)) << "the session is for this event only";
}

TEST_F(DeliveryTest, NothingIsAskedWithoutAnAnswerOrWhenTheHostSwitchedItOff) {
    memory.session->on({"POST", "", "/event"}, testing::ScriptedAnswer{200, ""}, 1);
    trackAndSettle();
    memory.session->on({"POST", "", "/event"}, testing::ScriptedAnswer::failure(platform::URLErrorKind::timedOut), 1);
    trackAndSettle();
    sdk->setIsDelivery(false);
    trackAndSettle();
    EXPECT_TRUE(sent("/interaction/v2").empty());
    sdk->setIsDelivery(true);
    trackAndSettle();
    EXPECT_EQ(sent("/interaction/v2").size(), 1U);
}

TEST_F(DeliveryTest, OnlyTheSandboxPortalGoesToTheSandbox) {
    Endpoints endpoints;
    endpoints.delivery = "http://production.example";
    endpoints.deliverySandbox = "http://sandbox.example";
    sdk->setEndpoints(endpoints);
    for (const auto& [portal, host] : std::map<std::string, std::string>{
             {"33167", "sandbox.example"}, {"331670", "production.example"}, {" 33167", "production.example"}}) {
        activate(portal);
        settle();
        memory.session->clear();
        trackAndSettle();
        EXPECT_EQ(sent("/interaction/v2").at(0)->url.host(), host) << portal;
    }
}

TEST_F(DeliveryTest, DebugTellsURLBodyAndWhatIsWrongWithAnAnswer) {
    sdk->setDebug(true);
    memory.session->on({"POST", "", "/interaction/v2"}, testing::ScriptedAnswer{200, R"({"webContents":{"a":{}}})"});
    trackAndSettle();
    const auto request = sent("/interaction/v2").at(0);
    const auto lines = logged();
    EXPECT_THAT(lines, Contains("DeliveryEvent: URL: " + request->url.text()));
    EXPECT_THAT(lines, Contains("DeliveryEvent: BODY: " + *request->body));
    EXPECT_THAT(lines, Contains("webContents.a.javascript: expected text, found nothing"));
}

TEST_F(DeliveryTest, WithoutAUserInterfaceTheMessageIsDroppedAndSaidSo) {
    sdk->setDebug(true);
    trace();
    offer({campaign(1)});
    trackAndSettle("view_product");
    EXPECT_FALSE(sdk->isShowingTemplate());
    ASSERT_EQ(traces.size(), 1U);
    EXPECT_EQ(traces[0].outcome, Outcome::noUserInterface);
    EXPECT_THAT(logged(), Contains(HasSubstr("no user interface is attached")));
    EXPECT_THAT(logged(), Contains(traces[0].text()));
    EXPECT_THAT(traces[0].text(), ::testing::AllOf(HasSubstr("\"view_product\""), HasSubstr("chosen: story 1")));
}

TEST_F(DeliveryTest, AToolkitThatIsAttachedMeanwhileIsLeftToItsOwnThread) {
    trace();
    offer({campaign(1)});
    const auto usual = *memory.platform()->userInterface();
    auto early = usual;
    testing::ManualQueues queues(memory.clock);
    early.mainQueue = queues.mainQueue();
    memory.platform()->attach(early);
    trackAndSettle();
    ASSERT_EQ(queues.waiting(), 1U);
    memory.platform()->attach(usual);
    memory.attachViews();
    queues.runUntilIdle();
    EXPECT_EQ(traces.at(0).outcome, Outcome::noUserInterface) << "there was none when it was chosen";
    EXPECT_EQ(memory.webViews->made(), 0U);
}

TEST_F(DeliveryTest, TheTraceTellsWhyNothingWasShown) {
    trace();
    offer({campaign(1, {{"template", "slide_in"}}), campaign(2, {{"template", "inline"}})});
    trackAndSettle();
    memory.session->on({"POST", "", "/interaction/v2"}, testing::ScriptedAnswer{200, "garbage"}, 1);
    trackAndSettle();
    memory.session->on({"POST", "", "/interaction/v2"},
                       testing::ScriptedAnswer::failure(platform::URLErrorKind::cannotConnect), 1);
    trackAndSettle();
    memory.session->on({"POST", "", "/interaction/v2"}, testing::ScriptedAnswer{200, ""}, 1);
    trackAndSettle();
    ASSERT_EQ(traces.size(), 4U);
    EXPECT_EQ(traces[0].outcome, Outcome::nothingToShow);
    ASSERT_EQ(traces[0].campaigns.size(), 2U);
    EXPECT_TRUE(traces[0].campaigns[0].typeDropped && traces[0].campaigns[1].typeDropped);
    EXPECT_EQ(traces[1].outcome, Outcome::undecodable);
    EXPECT_FALSE(traces[1].problem.empty());
    EXPECT_EQ(traces[2].outcome, Outcome::noAnswer);
    EXPECT_EQ(traces[3].outcome, Outcome::undecodable) << "an empty answer is one";
}

TEST_F(DeliveryTest, ALimitHoldsBackWhatWasChosenBeforeItWasReached) {
    memory.attachViews();
    sdk->setDebug(true);
    sdk->setDeliveryTraceCallback([this](const DeliveryTrace& each) {
        traces.push_back(each);
        if (each.outcome == Outcome::presented) {
            sdk->setIsShowingTemplate(false); // only the limit is in the way of the next one
        }
    });
    const Map once{{"event", "impression"}, {"value", 1}, {"timeUnit", "daily"}};
    const std::string both = answer({campaign(1, {{"template", "popup"}, {"zoneFrequencyCapping", once}})});
    memory.session->hold();
    sdk->track(CDPEvent("a"));
    sdk->track(CDPEvent("b"));
    memory.session->answer(0, {200, "{}"});
    memory.session->answer(1, {200, "{}"});
    settle();
    memory.session->answer(2, {200, both});
    memory.session->answer(3, {200, both});
    settle();
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[0].outcome, Outcome::presented);
    EXPECT_EQ(traces[1].outcome, Outcome::nothingToShow);
    EXPECT_FALSE(traces[1].chosen);
    EXPECT_EQ(traces[1].campaigns.at(0).capped->level, CappingLevel::zone);
    EXPECT_THAT(logged(), Contains("Frequency via zone setup 1, cached 1"));
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_EQ(memory.views->shown().size(), 2U) << "what is on screen stays";
}

TEST_F(DeliveryTest, ATraceCallbackThatThrowsLosesNothing) {
    memory.attachViews();
    int faults = 0;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault&) { ++faults; });
    sdk->setDeliveryTraceCallback([this](const DeliveryTrace& each) {
        traces.push_back(each);
        throw std::runtime_error("the host is in a bad mood");
    });
    const Map limit{{"event", "impression"}, {"value", 5}, {"timeUnit", "daily"}};
    offer({campaign(1, {{"template", "popup"}, {"zoneFrequencyCapping", limit}})});
    trackAndSettle();
    EXPECT_EQ(store()->string("at_freq_capping_zone"), R"({"9":{"timeExpire":1768521600.0,"impression":1}})");
    memory.webViews->last()->post("eventHandler", Map{{"type", "zentavo-cdp-webview-closed"}});
    settle();
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[1].outcome, Outcome::presented);
    EXPECT_EQ(traces[1].closedBy, DeliveryTrace::ClosedBy::page);
    EXPECT_EQ(faults, 2);
    EXPECT_FALSE(sdk->isShowingTemplate());
}

TEST_F(DeliveryTest, ChanceAloneDecidesBetweenCampaigns) {
    const auto response = DeliveryResponse::decode(
        answer({campaign(1), campaign(2, {{"template", "inline"}}), campaign(3, {{"template", "Inline"}})}));
    std::map<std::int64_t, int> shown;
    for (int i = 0; i < 2000; ++i) {
        ++shown[chooseCampaign(*response, {}, *memory.random, *sdk->state()->log, nullptr)->storyId];
    }
    EXPECT_EQ(shown.size(), 2U) << "type names are compared exactly";
    EXPECT_NEAR(shown[1], 1000, 120);
}

TEST_F(DeliveryTest, WhatOthersChoseStaysOnOneShortLine) {
    sdk->setDebug(true);
    trace();
    const std::string name = std::string(100'000, 'x') + "\nDelivery for \"forged\"";
    memory.session->on({"POST", "", "/interaction/v2"},
                       testing::ScriptedAnswer{200, json::write(Map{{"webContents", Map{{name, Map()}}}}).value()}, 1);
    trackAndSettle();
    EXPECT_EQ(traces.at(0).outcome, Outcome::undecodable);
    EXPECT_LT(traces[0].problem.size(), 500U);
    for (const std::string& line : logged()) {
        EXPECT_LT(line.size(), 1000U);
    }

    offer({campaign(1, {{"template", "\n" + name}})});
    trackAndSettle("two\nlines");
    const std::string text = traces.at(1).text();
    EXPECT_LT(text.size(), 500U);
    EXPECT_EQ(text.find('\n'), std::string::npos);
    EXPECT_THAT(text, HasSubstr("\"two?lines\""));
    EXPECT_EQ(traces[1].campaigns.at(0).templateType, "\n" + name) << "the fields are what they are";
}

TEST_F(DeliveryTest, TheTraceOfALongAnswerIsAShortLine) {
    std::vector<Map> many;
    for (int i = 0; i < 1000; ++i) {
        many.push_back(campaign(i));
    }
    trace();
    offer(many);
    trackAndSettle();
    ASSERT_EQ(traces.size(), 1U);
    EXPECT_EQ(traces[0].campaigns.size(), 1000U);
    EXPECT_LT(traces[0].text().size(), 1000U);
}

TEST_F(DeliveryTest, TracesArePostedInTheirOrder) {
    memory.session->hold();
    const examples::TracePost post(memory.platform(), "http://tool.example");
    DeliveryTrace trace;
    post(trace);
    trace.closedBy = DeliveryTrace::ClosedBy::page;
    for (const examples::TracePost& copy : {post, post}) {
        copy(trace);
    }
    for (std::size_t answered = 0; answered < 3; ++answered) {
        settle();
        ASSERT_EQ(sent("/_dev/trace").size(), answered + 1) << "the next waits until this one is answered";
        EXPECT_EQ(bodyOf(*sent("/_dev/trace").back()).contains("closed_by"), answered > 0);
        memory.session->answer(answered, {404, ""});
    }
    settle();
    post(trace);
    EXPECT_EQ(sent("/_dev/trace").size(), 4U);
}

TEST(DeliveryTraceJSON, TakesAnyTextAndStaysWithinWhatAServerTakes) {
    DeliveryTrace trace;
    trace.eventName = std::string(79, 'n') + "\xC3\xA9t\xE9";
    trace.problem = "pas de m\xE9moire\n"; // a system's message in Latin-1
    const std::string name(200, '"');
    const auto least = std::numeric_limits<std::int64_t>::min();
    trace.campaigns.assign(1000,
                           {least, name, DeliveryTrace::Capped{CappingLevel::destination, name, least, least}, false});
    trace.chosen = 700;
    const std::string text = trace.json();
    EXPECT_LE(text.size(), 256U << 10U);
    const Map map = json::readMap(text).value();
    EXPECT_EQ(*map.find("event"), std::string(79, 'n') + " ...");
    EXPECT_EQ(*map.find("problem"), "pas de m\xEF\xBF\xBDmoire?");
    EXPECT_EQ(map.find("campaigns")->asList()->size(), DeliveryTrace::mostInJSON);
    EXPECT_FALSE(map.contains("chosen")) << "none of those that are named";
    trace.chosen = DeliveryTrace::mostInJSON - 1;
    EXPECT_TRUE(json::readMap(trace.json())->contains("chosen"));
}

} // namespace
} // namespace zentavo
