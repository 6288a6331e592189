#include "tests/e2e/DevServer.h"

namespace zentavo::e2e {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

class StoryTest : public EndToEndTest {
protected:
    static Value extra(const Map& event, const char* key) {
        const Value* value = event.find("extra")->asMap()->find(key);
        return value != nullptr ? *value : Value();
    }
};

TEST_F(StoryTest, TheStoreCrossesProcessBorders) {
    ASSERT_EQ(console({"activate", "track:signup,plan=pro", "screen:Home", "identify:c1", "uid:u1", "wait"}), 0)
        << output;
    ASSERT_EQ(console({"activate", "track:again", "wait"}), 0) << output;

    const auto events = server.events(4);
    ASSERT_THAT(names(events), UnorderedElementsAre("app_install", "signup", "view_screenview", "again"));
    for (const Map& event : events) {
        const bool second = *event.find("en") == "again";
        EXPECT_EQ(extra(event, "visitor_type"), second ? "return" : "new");
        if (second) {
            EXPECT_EQ(*event.find("uid"), "u1");
            EXPECT_EQ(*event.find("dims"), Value(Map{{"customers", Map{{"customer_id", "c1"}}}}));
        }
    }
    ASSERT_EQ(console({"activate", "reset", "show"}), 0);
    EXPECT_THAT(output, ::testing::HasSubstr("customer \"\""));
}

TEST_F(StoryTest, TheServerFindsNothingWrongWithWhatTheSDKSends) {
    ASSERT_EQ(console({"activate", "track:signup", "launch", "token:0aff", "wait"}), 0) << output;
    ASSERT_EQ(console({"--portal", "1001", "activate", "track:production", "wait"}), 0) << output;
    for (const char* path : {"/event", "/api/application", "/api/app/identify"}) {
        const auto requests = server.requests(path, 1);
        ASSERT_FALSE(requests.empty()) << path;
        for (const Map& request : requests) {
            EXPECT_TRUE(request.find("problems")->asList()->empty()) << path;
            EXPECT_EQ(*request.find("status"), 200) << path;
        }
    }
    const auto found = server.events(4);
    EXPECT_THAT(names(found), ::testing::Contains("app_push_subscribe"));
    ASSERT_EQ(console({"activate", "show"}), 0);
    EXPECT_THAT(output, ::testing::Not(::testing::HasSubstr("push uid none")));
}

TEST_F(StoryTest, AnOutageCostsOneRetry) {
    ASSERT_EQ(console({"activate", "wait"}), 0);
    server.fault("path=/event&status=500&times=1");
    ASSERT_EQ(console({"--time-scale", "600", "activate", "track:order", "wait"}), 0);
    EXPECT_THAT(output, ::testing::HasSubstr("tries again in 60 s"));
    const auto events = server.events(3);
    EXPECT_THAT(names(events), ElementsAre("app_install", "order", "order"));
    EXPECT_EQ(events[1], events[2]);
}

TEST_F(StoryTest, EventsHandedOverBeforeTheEndStillLeave) {
    ASSERT_EQ(console({"activate", "track:a", "track:b", "track:c"}), 0); // no wait
    EXPECT_THAT(names(server.events(4)), UnorderedElementsAre("app_install", "a", "b", "c"));
}

TEST_F(StoryTest, HelloSaysHello) {
    Process hello({ZENTAVO_HELLO, server.url()}, {"XDG_DATA_HOME=" + folder.string()});
    ASSERT_EQ(hello.wait(), 0) << hello.output();
    EXPECT_THAT(hello.output(), ::testing::HasSubstr("Zentavo activate. Configurations received!"));
    EXPECT_THAT(names(server.events(3)), UnorderedElementsAre("app_install", "view_product", "view_screenview"));
}

TEST_F(StoryTest, TheConsoleExplainsItself) {
    EXPECT_EQ(console({"fly"}), 2);
    EXPECT_THAT(output, ::testing::HasSubstr("there is no verb \"fly\""));
    EXPECT_EQ(console({}), 2);
    EXPECT_THAT(output, ::testing::HasSubstr("usage:"));
}

} // namespace
} // namespace zentavo::e2e
