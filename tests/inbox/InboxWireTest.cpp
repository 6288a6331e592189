#include "tests/inbox/InboxTest.h"
#include "tests/support/Golden.h"

namespace zentavo {
namespace {

class InboxWireTest : public InboxTest {
protected:
    /// The last request, everything that goes over the wire.
    Map wire() {
        const auto request = memory.session->requests().back();
        Map headers;
        for (const auto& [name, value] : request->headers) {
            headers.set(name, value);
        }
        return Map{{"method", request->method},
                   {"url", request->url.text()},
                   {"headers", headers},
                   {"body", bodyOf(*request)}};
    }
};

TEST_F(InboxWireTest, GoldenWireShapes) {
    answerWithText("{}");
    fetchPage({"c1", "c2"}, 3);
    expectGolden("inbox-page", wire());
    fetchCatalogs();
    expectGolden("inbox-catalogs", wire());
    countUnread();
    expectGolden("inbox-count-unread", wire());
    fetchMessage("42");
    expectGolden("inbox-message", wire());
    inbox->modifyMessageStatus({"a", "b"}, ModifyAction::remove);
    expectGolden("inbox-modify", wire());
    inbox->markAllAsRead();
    expectGolden("inbox-mark-all-as-read", wire());
}

TEST_F(InboxWireTest, PathsAndMethodsAreThoseOfTheService) {
    // Beside the golden files, which are recorded: what the service insists on.
    fetchMessage("42");
    EXPECT_EQ(memory.session->requests().back()->url.path(), "/access/api/app-inbox/message//42");
    fetchMessage("a b/c?d");
    EXPECT_EQ(memory.session->requests().back()->url.path(), "/access/api/app-inbox/message//a%20b%2Fc%3Fd");
    inbox->modifyMessageStatus({}, ModifyAction::unread);
    EXPECT_EQ(memory.session->requests().back()->method, "PUT");
    EXPECT_EQ(bodyOf(*memory.session->requests().back()), (Map{{"ids", List()},
                                                               {"status", 1},
                                                               {"destination_id", 77},
                                                               {"lookupId", "c1"},
                                                               {"lookupType", "customer"},
                                                               {"portalId", 1001}}));
}

TEST_F(InboxWireTest, ThePageLimitIsSharedByAllInboxes) {
    const auto limit = [&] { return *bodyOf(*memory.session->requests().back()).find("limit"); };
    fetchPage();
    EXPECT_EQ(limit(), 5);
    AppInbox::setPageLimit(50);
    fetchPage();
    EXPECT_EQ(limit(), 50);
    std::make_shared<AppInbox>("1", "visitor", true)->forceFetchInboxItem({}, 1, nullptr);
    EXPECT_EQ(limit(), 50);
}

TEST_F(InboxWireTest, ADestinationThatIsNoNumberIsZero) {
    for (const auto& [text, number] : std::map<std::string, std::int64_t>{
             {"77", 77}, {"+5", 5}, {"-5", -5}, {"", 0}, {"7a", 0}, {"99999999999999999999", 0}}) {
        sdk->appInboxInit(text, "customer");
        Zentavo::appInbox()->markAllAsRead();
        EXPECT_EQ(*bodyOf(*memory.session->requests().back()).find("destinationId"), number) << text;
    }
}

TEST_F(InboxWireTest, ABaseThatFormsNoURLSilencesTheInbox) {
    for (const char* base : {"", "no url", "ftp://host.example", "http://"}) {
        Endpoints endpoints;
        endpoints.inbox = base;
        sdk->setEndpoints(endpoints);
        fetchPage();
        fetchCatalogs();
        countUnread();
        fetchMessage("42");
        inbox->modifyMessageStatus({"a"}, ModifyAction::read);
        inbox->markAllAsRead();
    }
    EXPECT_EQ(memory.session->count(), 0U);
    EXPECT_EQ(completions(), 0U);
}

} // namespace
} // namespace zentavo
