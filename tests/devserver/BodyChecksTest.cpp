#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devserver/EventService.h"
#include "devserver/PushRegistrationService.h"
#include "tests/devserver/SampleEvent.h"

namespace zentavo::devserver {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Problem = std::vector<std::string>;

Map& inside(Map& body, const char* name) { return *body.find(name)->asMap(); }

Problem problemsOf(const Map& body, const std::string& target = "/event" + sampleQuery, Twin twin = Twin::production) {
    IncomingRequest request;
    request.setTarget(target);
    Findings findings;
    EventService().answer(request, "/event", twin, body, findings);
    return findings.problems.list();
}

TEST(EventChecks, AGoodEventHasNoProblemsAndIsDescribed) {
    IncomingRequest request;
    request.setTarget("/event" + sampleQuery);
    Findings findings;
    const Answer answer = EventService("s7").answer(request, "/event", Twin::production, sampleEvent(), findings);
    EXPECT_THAT(findings.problems.list(), IsEmpty());
    EXPECT_EQ(answer.body, (Map{{"status", "ok"}, {"session_id", "s7"}}));
    EXPECT_EQ(findings.event, "view_product");
    EXPECT_EQ(findings.uid, "u1");
    EXPECT_EQ(findings.screen, "Home page");
    EXPECT_EQ(findings.customer, "c1");

    Map bare = sampleEvent();
    bare.set("dims", Map());
    bare.set("items", List());
    bare.set("uid", "");
    bare.set("identify_type", "anything");
    inside(bare, "extra").set("identify_type", "anything");
    inside(bare, "extra").set("screen_name", 7); // a host's own property
    EXPECT_THAT(problemsOf(bare), IsEmpty());
}

TEST(EventChecks, EachFaultIsNamed) {
    struct Case {
        std::function<void(Map&)> spoil;
        const char* problem;
    };
    const std::vector<Case> cases{
        {[](Map& b) { b.remove("dims"); }, "dims is missing"},
        {[](Map& b) { b.set("uid", 5); }, "uid is a number; expected text"},
        {[](Map& b) { b.set("en", ""); }, "en is empty"},
        {[](Map& b) { b.set("items", Map()); }, "items is a map; expected a list"},
        {[](Map& b) {
             b.set("items", List{Map(), "x"});
         },
         "items[1] is text; expected a map"},
        {[](Map& b) { b.set("resp_type", "xml"); }, "resp_type is \"xml\"; expected \"json\""},
        {[](Map& b) { b.set("format", "json"); }, "\"format\" does not belong in the body"},
        {[](Map& b) { b.set("prop_id", "556"); }, "prop_id is \"556\" in the body and \"555\" in the query"},
        {[](Map& b) { b.set("identify_type", "predict"); },
         "identify_type is \"predict\" and extra.identify_type is \"exact\""},
        {[](Map& b) { inside(b, "dims").set("stores", Map()); }, "\"stores\" does not belong in dims"},
        {[](Map& b) { inside(b, "dims").set("users", Map()); },
         "dims: \"users\" is empty; it is left out when it has no content"},
        {[](Map& b) { inside(b, "extra").remove("visitor_type"); }, "extra.visitor_type is missing"},
        {[](Map& b) { inside(b, "context").remove("instanceId"); }, "context.instanceId is missing"},
        {[](Map& b) { inside(b, "context").set("gps", 1); }, "\"gps\" does not belong in context"},
        {[](Map& b) { inside(inside(b, "context"), "screen").set("width", "wide"); },
         "context.screen.width is text; expected a number"},
    };
    for (const Case& each : cases) {
        Map body = sampleEvent();
        each.spoil(body);
        const Problem found = problemsOf(body);
        EXPECT_FALSE(found.empty());
        EXPECT_EQ(found.empty() ? "" : found.front(), each.problem);
        EXPECT_LE(found.size(), 2U) << each.problem;
    }
}

TEST(EventChecks, TheQueryIsExact) {
    const Map body = sampleEvent();
    EXPECT_THAT(problemsOf(body, "/event?prop_id=555&portal_id=1000&resp_type=json"), IsEmpty());
    EXPECT_THAT(problemsOf(body, "/event"),
                ElementsAre("query item resp_type is missing", "query item portal_id is missing",
                            "query item prop_id is missing"));
    EXPECT_THAT(problemsOf(body, "/event?resp_type=JSON&portal_id=1000&portal_id=1000&prop_id&x=1"),
                ElementsAre("query item resp_type is \"JSON\"; expected \"json\"", "query item portal_id comes 2 times",
                            "query item prop_id has no value", "query item \"x\" does not belong here"));
}

TEST(EventChecks, EachTwinHasItsPortals) {
    Map sandbox = sampleEvent();
    sandbox.set("portal_id", "33167");
    const std::string query = "?resp_type=json&portal_id=33167&prop_id=555";
    EXPECT_THAT(problemsOf(sandbox, "/sandbox/event" + query, Twin::sandbox), IsEmpty());
    EXPECT_THAT(problemsOf(sandbox, "/event" + query), ElementsAre(HasSubstr("belongs to the sandbox")));
    EXPECT_THAT(problemsOf(sampleEvent(), "/sandbox/event" + sampleQuery, Twin::sandbox),
                ElementsAre(HasSubstr("belongs to production")));
}

TEST(EventChecks, AHostileBodyMakesAShortList) {
    Map body = sampleEvent();
    for (int i = 0; i < 5'000; ++i) {
        body.set(std::string(5'000, 'x') + std::to_string(i), i);
    }
    const Problem found = problemsOf(body);
    ASSERT_EQ(found.size(), Problems::maximum + 1);
    EXPECT_EQ(found.back(), "and 4950 more");
    EXPECT_LT(found.front().size(), 120U);
}

TEST(PushChecks, IdentifyIsCheckedAndRemembered) {
    struct Case {
        const char* name;
        Value value;
        const char* problem;
    };
    const Map good{{"portal_id", 1000}, {"identifier", "0aff"}, {"channel", "ios"}, {"device_id", "D"}};
    const std::vector<Case> cases{
        {"portal_id", "1000", "portal_id is text; expected an integer"},
        {"identifier", "0AFF", "identifier is \"0AFF\"; expected two lower-case hexadecimal digits for each byte"},
        {"identifier", "0af", "identifier is \"0af\"; expected two lower-case hexadecimal digits for each byte"},
        {"channel", "web", "channel is \"web\"; expected \"ios\""},
        {"device_id", Value(), "device_id is null; expected text"},
        {"prop_id", "555", "\"prop_id\" does not belong in the body"},
    };
    PushRegistrationService service;
    const IncomingRequest request;
    for (const Case& each : cases) {
        Map body = good;
        body.set(each.name, each.value);
        Findings findings;
        service.answer(request, "/api/app/identify", Twin::production, body, findings);
        EXPECT_THAT(findings.problems.list(), ElementsAre(each.problem));
    }
    EXPECT_TRUE(service.devices().empty());

    for (int i = 0; i < 2; ++i) {
        Findings findings;
        const Answer answer = service.answer(request, "/api/app/identify", Twin::production, good, findings);
        EXPECT_EQ(answer.body, (Map{{"data", Map{{"zentavo_apppush_uid", pushUid("0aff")}}}}));
    }
    EXPECT_EQ(service.devices().size(), 1U);
    EXPECT_NE(pushUid("0aff"), pushUid("0afe"));
    EXPECT_EQ(pushUid("0aff"), "06B7A5D3-FA04-4E5B-8FFB-B711F0A21A76") << "stays the same over restarts";
}

} // namespace
} // namespace zentavo::devserver
