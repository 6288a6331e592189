#include "tests/inbox/InboxTest.h"

namespace zentavo {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

class InboxAnswersTest : public InboxTest {
protected:
    /// A page with one message "m0", so that it can be seen whether a later answer changes anything.
    void haveAPage() {
        answerWithText(textOf(pageOf({plainItem("m0")})));
        fetchPage();
        pages.clear();
    }
    std::string fault;
    void containFaults() {
        setFaultPolicy(FaultPolicy::contain, [this](const Fault& found) { fault = found.message; });
    }
};

TEST_F(InboxAnswersTest, APageIsKeptAndHandedOver) {
    answerWithText(textOf(pageOf({plainItem("m1"), fullItem("m2")})));
    fetchPage();
    ASSERT_EQ(pages.size(), 1U);
    ASSERT_THAT(pages[0], SizeIs(2));
    EXPECT_EQ(pages[0][1].itemId, "m2");
    EXPECT_EQ(inbox->getMessage(), pages[0]);

    inbox->forceFetchInboxItem({}, 2, nullptr); // nobody listens; the page is kept all the same
    answerWithText(textOf(answerWith(Map())));
    fetchPage();
    EXPECT_THAT(pages.at(1), IsEmpty());
    EXPECT_THAT(inbox->getMessage(), IsEmpty());
}

TEST_F(InboxAnswersTest, APageThatCannotBeReadSaysWhyAndChangesNothing) {
    haveAPage();
    Map number = plainItem();
    number.set("heading", 7);
    Map absent = plainItem();
    absent.remove("heading");
    Map null = plainItem();
    null.set("heading", nullptr);
    const std::string whole = textOf(pageOf({plainItem(), plainItem()}));
    const std::string at = "data.entries[1].heading";
    const std::vector<std::pair<std::string, std::string>> cases{
        {textOf(pageOf({plainItem(), number})),
         "Type 'text' mismatch: " + at + ": expected text, found a number\ncodingPath: " + at},
        {textOf(pageOf({plainItem(), absent})),
         "Key 'heading' not found: " + at + ": expected text, found nothing\ncodingPath: " + at},
        {textOf(pageOf({plainItem(), null})),
         "Value 'text' not found: " + at + ": expected text, found null\ncodingPath: " + at},
        {textOf(Map{{"data", Map()}, {"code", 205}, {"message", "ok"}}),
         "code: 205 is no code that the services answer with"},
        {"<html><body>502 Bad Gateway</body></html>", "not JSON: "},
        {whole.substr(0, whole.size() / 2), "not JSON: "},
        {"[]", "Type 'map' mismatch: expected a map, found a list\ncodingPath: "},
        {"null", "Value 'map' not found: expected a map, found null\ncodingPath: "},
        {R"({"data":{"a\n<ZENTAVO> forged":7}})", "Type 'list' mismatch: data.a?<ZENTAVO> forged: "},
    };
    for (const auto& [answer, line] : cases) {
        memory.console->clear();
        answerWithText(answer);
        fetchPage();
        ASSERT_THAT(memory.console->lines(), SizeIs(1)) << line;
        EXPECT_THAT(memory.console->lines()[0], StartsWith(line));
    }
    EXPECT_THAT(pages, IsEmpty());
    ASSERT_THAT(inbox->getMessage(), SizeIs(1));
    EXPECT_EQ(inbox->getMessage()[0].itemId, "m0");
}

TEST_F(InboxAnswersTest, WhatAServerPutsIntoADiagnosticIsBounded) {
    const std::string key(100'000, 'k');
    answerWithText(textOf(answerWith(Map{{key, 1}})));
    fetchPage();
    ASSERT_THAT(memory.console->lines(), SizeIs(1));
    EXPECT_LT(memory.console->lines()[0].size(), 2'000U);
}

TEST_F(InboxAnswersTest, AURLThatIsNoneIsAbsentAndLoggedUnderDebug) {
    Map item = plainItem();
    item.set("launch_url", "http://");
    answerWithText(textOf(pageOf({item})));
    fetchPage();
    EXPECT_THAT(memory.console->lines(), IsEmpty());
    sdk->setDebug(true);
    fetchPage();
    EXPECT_THAT(logged(), ElementsAre(HasSubstr("launch_url: no URL")));
    EXPECT_EQ(pages.at(1).at(0).lauchUrl, std::nullopt);
}

TEST_F(InboxAnswersTest, ATransportErrorGoesToTheSystemLogOfThreeCalls) {
    haveAPage();
    answerWithFailure();
    fetchPage();
    fetchCatalogs();
    inbox->markAllAsRead();
    settle();
    EXPECT_THAT(systemLogLines(), SizeIs(3));
    countUnread();
    fetchMessage("42");
    inbox->modifyMessageStatus({"a"}, ModifyAction::read);
    settle();
    EXPECT_THAT(systemLogLines(), SizeIs(3)) << "the other three are silent";
    EXPECT_EQ(completions(), 0U);
    EXPECT_THAT(inbox->getMessage(), SizeIs(1));
    EXPECT_EQ(inbox->numUnreadMessage(), std::nullopt);
}

TEST_F(InboxAnswersTest, AnAnswerOfNoBytesStopsThePageFetchOnly) {
    containFaults();
    haveAPage();
    sdk->setDebug(true);
    answerWithText("");
    fetchCatalogs();
    countUnread();
    fetchMessage("42");
    inbox->modifyMessageStatus({"a"}, ModifyAction::read);
    settle();
    EXPECT_THAT(logged(), ElementsAre("not JSON: no text", "not JSON: no text")); // catalogs and message
    inbox->markAllAsRead();
    settle();
    EXPECT_EQ(inbox->numUnreadMessage(), 0) << "no bytes are an answer";
    EXPECT_EQ(fault, "");

    fetchPage();
    EXPECT_THAT(fault, HasSubstr("neither data nor an error"));
    EXPECT_EQ(completions(), 0U);
    EXPECT_THAT(inbox->getMessage(), SizeIs(1));
    setFaultPolicy(FaultPolicy::stop);
    EXPECT_DEATH(fetchPage(), "neither data nor an error");
}

TEST_F(InboxAnswersTest, CatalogsCountAndMessageAreHandedOver) {
    answerWithText(textOf(pageOf({Map{{"catalogId", "c1"}, {"catalogName", "Sales"}}})));
    fetchCatalogs();
    ASSERT_EQ(catalogs.size(), 1U);
    EXPECT_EQ(catalogs[0], (std::vector<Catalog>{{"c1", "Sales"}}));
    answerWithText(textOf(answerWith(Map{{"total", 3}})));
    countUnread();
    EXPECT_EQ(inbox->numUnreadMessage(), 3);
    answerWithText(textOf(answerWith(Map())));
    countUnread();
    EXPECT_THAT(counts, ElementsAre(3, 0));
    EXPECT_EQ(inbox->numUnreadMessage(), 0);
    answerWithText(textOf(answerWith(fullItem("m7"))));
    fetchMessage("m7");
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].buttonLabel1, "Go");
}

TEST_F(InboxAnswersTest, OddAnswersCallNoCompletion) {
    sdk->setDebug(true);
    std::string whole = textOf(answerWith(plainItem()));
    for (const std::string& answer :
         {std::string("<html>"), whole.substr(0, 50), std::string(R"({"data":1,"code":200,"message":""})")}) {
        memory.console->clear();
        answerWithText(answer);
        fetchCatalogs();
        fetchMessage("42");
        EXPECT_THAT(logged(), SizeIs(2)) << answer;
        countUnread();
        EXPECT_THAT(logged(), SizeIs(2)) << "counting is silent: " << answer;
    }
    EXPECT_EQ(completions(), 0U);
    EXPECT_EQ(inbox->numUnreadMessage(), std::nullopt);
}

TEST_F(InboxAnswersTest, OnlySuccessIsLoggedForAStatusChange) {
    haveAPage();
    sdk->setDebug(true);
    for (const char* answer : {R"({"code":200,"data":{},"message":"ok"})", R"({"code":201})", R"({"code":205})",
                               R"({"code":"200"})", "{}", "garbage"}) {
        answerWithText(answer);
        inbox->modifyMessageStatus({"m0"}, ModifyAction::remove);
        settle();
    }
    EXPECT_THAT(logged(), ElementsAre("MODIFY SUCCESS"));
    EXPECT_THAT(inbox->getMessage(), SizeIs(1));
}

TEST_F(InboxAnswersTest, TenThousandItems) {
    List many;
    for (int i = 0; i < 10'000; ++i) {
        many.emplace_back(i % 2 == 0 ? plainItem("m" + std::to_string(i)) : fullItem("m" + std::to_string(i)));
    }
    const std::string text = textOf(pageOf(std::move(many)));
    ASSERT_LT(text.size(), 8U << 20U) << "what the client takes";
    answerWithText(text);
    fetchPage();
    ASSERT_EQ(pages.size(), 1U);
    ASSERT_THAT(pages[0], SizeIs(10'000));
    EXPECT_EQ(pages[0].back().itemId, "m9999");
    answerWithText(text.substr(0, text.size() - 1));
    fetchPage();
    EXPECT_EQ(pages.size(), 1U);
    EXPECT_THAT(inbox->getMessage(), SizeIs(10'000));
}

} // namespace
} // namespace zentavo
