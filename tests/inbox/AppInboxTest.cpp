#include <thread>

#include "tests/inbox/InboxTest.h"

namespace zentavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AppInboxTest : public InboxTest {
protected:
    /// The instance of an app that was never activated, so that no portal id is known.
    void withoutPortal() {
        restart();
        sdk->setDebug(true);
        sdk->appInboxInit("77", "customer");
        inbox = Zentavo::appInbox();
        memory.session->clear();
    }
    Value lastBody(const char* key) { return *bodyOf(*memory.session->requests().back()).find(key); }
};

TEST_F(AppInboxTest, StartsEmptyAndIsReplacedByTheNext) {
    EXPECT_THAT(inbox->getMessage(), IsEmpty());
    EXPECT_THAT(inbox->catalogName(), IsEmpty());
    EXPECT_FALSE(inbox->numUnreadMessage() || inbox->pushBackMessage() || inbox->socketCommand() || inbox->delegate());
    EXPECT_EQ(inbox->destinationId(), "77");
    EXPECT_EQ(inbox->realtimeChannel(), "appInbox_1001_77_c1_customer");
    sdk->appInboxInit("78", "visitor");
    EXPECT_NE(Zentavo::appInbox(), inbox);
    EXPECT_EQ(Zentavo::appInbox()->lookupType(), "visitor");
}

TEST_F(AppInboxTest, WhomItIsForIsSettledWhenItIsMade) {
    EXPECT_EQ(inbox->lookupId(), "c1");
    EXPECT_EQ(AppInbox("77", "visitor", false).lookupId(), "u1");
    EXPECT_EQ(AppInbox("77", "Customer", false).lookupId(), "u1") << "only the exact word means the customer";
    sdk->setCustomerProperties("c2", {});
    EXPECT_EQ(inbox->lookupId(), "c1");
    sdk->resetCustomer();
    sdk->resetUid();
    EXPECT_EQ(AppInbox("77", "customer", false).lookupId(), "");
    EXPECT_EQ(AppInbox("77", "visitor", false).lookupId(), sdk->getDeviceId());
    restart(); // no store
    EXPECT_EQ(AppInbox("77", "customer", false).lookupId(), "");
    EXPECT_EQ(AppInbox("77", "visitor", false).lookupId(), sdk->getDeviceId());

    inbox->setLookupId("other");
    inbox->setLookupType("visitor");
    inbox->markAllAsRead();
    EXPECT_EQ(lastBody("lookupId"), "other");
    EXPECT_EQ(lastBody("lookupType"), "visitor");
}

TEST_F(AppInboxTest, TheDelegateIsHeldWeakly) {
    struct Delegate final : AppInboxDelegate {
        void onNewMessage(const InboxItem&) override {}
    };
    auto delegate = std::make_shared<Delegate>();
    inbox->setDelegate(delegate);
    EXPECT_EQ(inbox->delegate(), delegate);
    delegate.reset();
    EXPECT_EQ(inbox->delegate(), nullptr);
}

TEST_F(AppInboxTest, WithoutAPortalIdTwoCallsEndAndFourSendZero) {
    withoutPortal();
    fetchCatalogs();
    fetchMessage("42");
    EXPECT_EQ(memory.session->count(), 0U);
    EXPECT_THAT(logged(), ElementsAre("ERROR WHEN FETCHING LABELS", "CUSTOMER ID NULL"));
    EXPECT_EQ(completions(), 0U);

    answerWithText("{}");
    const std::vector<std::function<void()>> others{[&] { fetchPage(); }, [&] { countUnread(); },
                                                    [&] { inbox->modifyMessageStatus({"a"}, ModifyAction::read); },
                                                    [&] { inbox->markAllAsRead(); }};
    for (std::size_t i = 0; i < others.size(); ++i) {
        others[i]();
        ASSERT_EQ(memory.session->count(), i + 1);
        EXPECT_EQ(lastBody("portalId"), 0);
    }
    EXPECT_EQ(inbox->realtimeChannel(), "appInbox__77__customer");
}

TEST_F(AppInboxTest, APortalIdThatIsNoNumberStopsAllButThePageFetch) {
    int faults = 0;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault& fault) {
        EXPECT_THAT(fault.message, ::testing::HasSubstr("portal id that is a number"));
        ++faults;
    });
    for (const char* portal : {"", "12a", " 1", "1.5", "99999999999999999999"}) {
        activate(portal);
        settle();
        memory.session->clear();
        faults = 0;
        fetchCatalogs();
        fetchMessage("42");
        countUnread();
        inbox->modifyMessageStatus({"a"}, ModifyAction::read);
        inbox->markAllAsRead();
        EXPECT_EQ(faults, 5) << portal;
        EXPECT_EQ(memory.session->count(), 0U) << portal;
        answerWithText(textOf(pageOf({})));
        fetchPage();
        EXPECT_EQ(lastBody("portalId"), 0) << portal;
    }
    EXPECT_EQ(pages.size(), 5U);
    activate("+33167");
    inbox->markAllAsRead();
    EXPECT_EQ(lastBody("portalId"), 33167);

    setFaultPolicy(FaultPolicy::stop);
    activate("12a");
    EXPECT_DEATH(inbox->markAllAsRead(), "portal id that is a number");
}

TEST_F(AppInboxTest, AnInboxLostDuringARequest) {
    std::string fault;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault& found) { fault = found.message; });
    memory.session->hold();
    fetchPage();
    fetchCatalogs();
    inbox->markAllAsRead();
    inbox->modifyMessageStatus({"a"}, ModifyAction::read);
    fetchMessage("m7");
    countUnread();
    ASSERT_EQ(memory.session->open(), 6U);
    loseInbox();

    sdk->setDebug(true);
    memory.session->answer(0, {200, textOf(pageOf({plainItem()}))});
    memory.session->answer(1, {200, textOf(pageOf({}))});
    memory.session->answer(2, testing::ScriptedAnswer::failure(platform::URLErrorKind::cannotConnect));
    memory.session->answer(3, {200, R"({"code":200})"});
    settle();
    EXPECT_EQ(completions(), 0U);
    EXPECT_THAT(systemLogLines(), IsEmpty());
    EXPECT_THAT(logged(), ElementsAre(::testing::EndsWith("is not sent again"), "MODIFY SUCCESS"));
    memory.session->answer(4, {200, textOf(answerWith(plainItem("m7")))});
    settle();
    ASSERT_EQ(items.size(), 1U) << "a message by its id does not need the inbox";
    EXPECT_EQ(items[0].itemId, "m7");
    EXPECT_EQ(fault, "");
    memory.session->answer(5, {200, textOf(answerWith(Map{{"total", 3}}))});
    settle();
    EXPECT_THAT(fault, ::testing::HasSubstr("inbox is gone"));
    EXPECT_THAT(counts, IsEmpty());
    memory.queues->advance(std::chrono::hours(2));
    EXPECT_EQ(memory.session->count(), 6U) << "and nothing is repeated for it";
}

TEST_F(AppInboxTest, AFailedRequestIsRepeatedByTheClient) {
    answerWithFailure();
    inbox->modifyMessageStatus({"a"}, ModifyAction::read);
    settle();
    memory.queues->advance(std::chrono::seconds(60));
    ASSERT_EQ(memory.session->count(), 2U);
    EXPECT_EQ(*memory.session->requests()[0], *memory.session->requests()[1]);
}

TEST_F(AppInboxTest, HostAndWorkerShareItSafely) {
    // For ThreadSanitizer: answers change the fields while the host reads and replaces them.
    answerWithText(textOf(pageOf({plainItem(), fullItem()})));
    for (int i = 0; i < 20; ++i) {
        inbox->forceFetchInboxItem({}, 1, [](std::vector<InboxItem>) {});
    }
    std::thread host([this] {
        for (int i = 0; i < 200; ++i) {
            inbox->getMessage();
            inbox->numUnreadMessage();
            inbox->setLookupId(std::to_string(i));
            inbox->setDelegate({});
            AppInbox::setPageLimit(i);
            sdk->appInboxInit("77", "customer");
        }
    });
    settle();
    for (int i = 0; i < 20; ++i) {
        inbox->markAllAsRead();
        settle();
    }
    host.join();
    EXPECT_EQ(inbox->getMessage().size(), 2U);
    EXPECT_EQ(inbox->numUnreadMessage(), 0);
}

} // namespace
} // namespace zentavo
