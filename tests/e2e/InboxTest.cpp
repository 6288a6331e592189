#include "tests/e2e/DevServer.h"

namespace zentavo::e2e {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// The default messages of the dev server: six of them are for every customer at destination 77.
class InboxTest : public EndToEndTest {
protected:
    InboxTest() { EXPECT_EQ(console({"activate", "identify:c9", "wait"}), 0) << output; }

    /// The next start of the app, for the customer who logged in before.
    void run(std::vector<std::string> verbs) {
        verbs.insert(verbs.begin(), "activate");
        verbs.emplace_back("wait");
        ASSERT_EQ(console(std::move(verbs)), 0) << output;
    }
};

TEST_F(InboxTest, ReadsChangesAndCountsAndTheServersStoreAgrees) {
    run({"inbox:list"});
    EXPECT_THAT(output, HasSubstr("5 messages\n    message hours, status 1: New opening hours\n"));
    run({"inbox:list,2"});
    EXPECT_THAT(output, HasSubstr("1 messages\n    message welcome"));
    run({"inbox:list,1,orders,sales"});
    EXPECT_THAT(output, HasSubstr("3 messages"));
    run({"inbox:catalogs"});
    EXPECT_THAT(output, HasSubstr("catalog orders: Orders"));
    run({"inbox:count"});
    EXPECT_THAT(output, HasSubstr("6 unread"));

    run({"inbox:read,hours,basket", "wait", "inbox:remove,welcome", "wait", "inbox:unread,basket", "wait",
         "inbox:count"});
    EXPECT_THAT(output, HasSubstr("4 unread"));
    run({"inbox:get,hours"});
    EXPECT_THAT(output, HasSubstr("message hours, status 2: New opening hours"));
    EXPECT_EQ(server.inboxStates("c9").at("hours"), 2);
    EXPECT_EQ(server.inboxStates("c9").at("basket"), 1);
    EXPECT_EQ(server.inboxStates("c9").at("welcome"), 3);

    run({"inbox:mark-all", "wait", "inbox:count", "inbox:list"});
    EXPECT_THAT(output, HasSubstr("0 unread"));
    EXPECT_THAT(output, Not(HasSubstr("welcome")));
    for (const auto& [id, state] : server.inboxStates("c9")) {
        const bool others = id == "points" || id == "other-place"; // another customer's, another destination's
        EXPECT_EQ(state, id == "welcome" ? 3 : others ? 1 : 2) << id;
    }
}

TEST_F(InboxTest, TheServerFindsNothingWrongWithAnyCall) {
    run({"inbox:list", "inbox:catalogs", "inbox:count", "inbox:get,hours", "inbox:read,hours", "inbox:mark-all"});
    const std::string base = "/access/api/app-inbox";
    for (const char* path : {"/message/performance", "/catalog/performance", "/message/count-unread", "/message//hours",
                             "/message", "/message/mark-all-as-read"}) {
        const auto requests = server.requests(base + path, 1);
        ASSERT_EQ(requests.size(), 1U) << path;
        EXPECT_EQ(*requests[0].find("problems"), Value(List())) << path;
        EXPECT_EQ(*requests[0].find("status"), 200) << path;
    }
}

TEST_F(InboxTest, AVisitorHasAnInboxToo) {
    run({"uid:u1", "inbox:open,77,visitor", "inbox:count", "wait", "inbox:open,78,visitor", "inbox:list"});
    EXPECT_THAT(output, HasSubstr("4 unread"));
    EXPECT_THAT(output, HasSubstr("1 messages\n    message other-place"));
}

TEST_F(InboxTest, WhateverTheServiceDoesTheNextCallIsAnswered) {
    for (const char* fault : {"status=500", "reset=1", "body=%3Chtml%3E", "reset=mid", "size=104857600", "delay=300"}) {
        server.fault(std::string("path=/access/api/app-inbox/message/performance&times=1&") + fault);
        ASSERT_EQ(console({"--time-scale", "6000", "activate", "inbox:list", "wait", "inbox:count", "wait"}), 0)
            << fault << output;
        EXPECT_THAT(output, HasSubstr("6 unread")) << fault;
    }
    EXPECT_EQ(console({"activate", "inbox:fly"}), 2);
}

} // namespace
} // namespace zentavo::e2e
