#include <future>
#include <thread>

#include "ports/desktop/NotificationActions.h"
#include "tests/push/SamplePush.h"
#include "tests/support/SdkTest.h"
#include "zentavo/push/BadgeRule.h"
#include "zentavo/push/ImageFetch.h"
#include "zentavo/push/ZentavoNotificationService.h"

namespace zentavo {
namespace {

using platform::NotificationContent;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using testing::ScriptedAnswer;
using ::testing::SizeIs;
using ::testing::StartsWith;

const char* const imageURL = "https://media.shop.example/coat.png";

class NotificationServiceTest : public SdkTest {
protected:
    static NotificationContent push(const Map& aps) {
        NotificationContent content;
        content.title = "Winter sale";
        content.body = "Everything at half price";
        content.categoryIdentifier = "as-it-came";
        content.userInfo = Map{{"aps", aps}};
        return content;
    }
    /// What is shown of a push; it must be exactly one notification.
    NotificationContent shown(const NotificationContent& content) {
        std::vector<NotificationContent> results;
        service->didReceive({"n1", content}, [&](NotificationContent result) { results.push_back(std::move(result)); });
        EXPECT_THAT(results, SizeIs(1));
        return results.empty() ? NotificationContent() : results.front();
    }
    NotificationContent shown(const Map& aps) { return shown(push(aps)); }

    std::shared_ptr<platform::Preferences> badgeStore() { return memory.preferences->standard(); }
    std::unique_ptr<ZentavoNotificationService> service = std::make_unique<ZentavoNotificationService>();
};

TEST_F(NotificationServiceTest, APushWithoutAnythingKeepsWhatItSaysAndGetsASound) {
    NotificationContent content = push({});
    content.subtitle = "From Friday";
    NotificationContent expected = content;
    expected.sound = NotificationContent::defaultSound;
    EXPECT_EQ(shown(content), expected);

    content.userInfo = {}; // not even "aps"
    content.sound = "bell.wav";
    EXPECT_EQ(shown(content), content);
    content.userInfo = Map{{"aps", "text"}};
    EXPECT_EQ(shown(content), content);

    EXPECT_EQ(memory.session->count(), 0U);
    EXPECT_THAT(memory.userNotifications->knownCategories(), IsEmpty());
    EXPECT_FALSE(badgeStore()->object(keys().badge));
}

TEST_F(NotificationServiceTest, AnEmptyCategoryBecomesTheContentExtensionsAndANamedOneMakesThatKnown) {
    EXPECT_EQ(shown(Map{{"category", ""}}).categoryIdentifier, "ZentavoNotificationContent");
    EXPECT_THAT(memory.userNotifications->knownCategories(), IsEmpty());

    memory.userNotifications->addCategory({"orders", {{"track", "Track"}}});
    EXPECT_EQ(shown(Map{{"category", "sale"}}).categoryIdentifier, "as-it-came");
    EXPECT_EQ(shown(Map{{"category", "sale"}}).categoryIdentifier, "as-it-came");
    EXPECT_THAT(memory.userNotifications->knownCategories(),
                ElementsAre(platform::NotificationCategory{"orders", {{"track", "Track"}}},
                            platform::NotificationCategory{"ZentavoNotificationContent", {}}));

    EXPECT_EQ(shown(Map{{"category", 1}}).categoryIdentifier, "as-it-came");
    EXPECT_EQ(shown(Map{}).categoryIdentifier, "as-it-came");
    // The port, which knows nothing of pushes, has to write it once more.
    EXPECT_STREQ(desktop::richCategory, ZentavoNotificationService::contentCategory);
}

TEST(BadgeRule, Table) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    const auto rule = [](Value type, Value value) {
        return Map{{"type", std::move(type)}, {"value", std::move(value)}};
    };
    const BadgeOutcome overflow{{}, {}, true};
    const struct {
        const char* what;
        std::optional<Value> stored;
        Map rule;
        BadgeOutcome outcome;
    } cases[] = {
        {"adds to nothing", {}, rule("increase", 2), {2, 2}},
        {"adds", 2, rule("increase", 2), {4, 4}},
        {"adds what is negative", 2, rule("increase", -3), {-1, -1}},
        {"adds to what reads as a number", "5 or so", rule("increase", 1), {6, 6}},
        {"goes up by one at most", 5, rule("set_to", 9), {6, 6}},
        {"goes up by one", 5, rule("set_to", 6), {6, 6}},
        {"stays", 5, rule("set_to", 5), {5, 5}},
        {"goes down as far as it says", 5, rule("set_to", 3), {3, 3}},
        {"starts with one", {}, rule("set_to", 9), {1, 1}},
        {"cuts fractions", 5, rule("set_to", 3.75), {3, 3}},
        {"bears large numbers", 5, rule("set_to", 1e300), {6, 6}},
        {"clears", 5, rule("do_not_set", 7), {0, 0}},
        {"clears without a value", 5, Map{{"type", "do_not_set"}}, {0, 0}},
        {"clears the icon alone for other types", 5, rule("add", 1), {0, {}}},
        {"begins at 0 for other types", {}, rule("add", 1), {0, 0}},
        {"leaves what is stored without a type", 5, Map{{"value", 1}}, {5, {}}},
        {"leaves what is stored where the type is no text", 5, rule(1, 1), {5, {}}},
        {"begins at 0 without a type", {}, Map(), {0, 0}},
        {"leaves what is stored without a value", 5, Map{{"type", "increase"}}, {5, {}}},
        {"increases by integers only", 5, rule("increase", 1.5), {5, {}}},
        {"sets to numbers only", 5, rule("set_to", "3"), {5, {}}},
        {"shows nothing where no number is stored", "5", Map(), {{}, {}}},
        {"a sum beyond 64 bits", 1, rule("increase", most), overflow},
        {"one more beyond 64 bits", most, rule("set_to", 3), overflow},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(applyBadgeRule(test.stored, test.rule), test.outcome) << test.what;
    }
}

TEST_F(NotificationServiceTest, TheBadgeCountsOnInTheExtensionsOwnStoreAcrossProcesses) {
    const auto files = std::make_shared<testing::MemoryStore>();
    const auto push = [&](std::int64_t value) {
        testing::MemoryPlatform process("com.example.host.service", files);
        ZentavoNotificationService inProcess(std::make_shared<Zentavo>(process.platform()));
        std::optional<std::int64_t> badge;
        const Map rule{{"type", "increase"}, {"value", value}};
        inProcess.didReceive({"n", NotificationServiceTest::push({{"badge", rule}})},
                             [&](const NotificationContent& content) { badge = content.badge; });
        EXPECT_EQ(process.preferences->standard()->object("com.example.host.service.badge"), Value(*badge));
        return badge;
    };
    EXPECT_EQ(push(2), 2);
    EXPECT_EQ(push(3), 5);
    EXPECT_EQ(shown(Map{{"badge", 3}}).badge, std::nullopt) << "a number is no rule";
}

TEST_F(NotificationServiceTest, ABadgeBeyondAllNumbersIsAFaultThatLosesNoPush) {
    badgeStore()->set(keys().badge, std::numeric_limits<std::int64_t>::max());
    const Map aps{{"badge", Map{{"type", "increase"}, {"value", 1}}}};
    EXPECT_DEATH(shown(aps), "64 bits");

    std::vector<std::string> faults;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault& fault) { faults.push_back(fault.entryPoint); });
    EXPECT_EQ(shown(aps).title, "Winter sale");
    EXPECT_THAT(faults, ElementsAre("didReceive"));
    EXPECT_EQ(badgeStore()->integer(keys().badge), std::numeric_limits<std::int64_t>::max());
}

TEST_F(NotificationServiceTest, TheImageIsAttachedUnderOneNameWhateverItIs) {
    memory.session->setDefault({.body = "\x89PNG picture"});
    const auto first = shown(Map{{"urlImageString", imageURL}});
    const auto second = shown(Map{{"urlImageString", imageURL}});
    ASSERT_THAT(first.attachments, SizeIs(1));
    ASSERT_THAT(second.attachments, SizeIs(1));
    EXPECT_EQ(first.attachments[0].identifier, "image.jpg");
    EXPECT_TRUE(first.attachments[0].path.ends_with("/image.jpg"));
    EXPECT_NE(first.attachments[0].path, second.attachments[0].path) << "each in a folder of its own";
    EXPECT_EQ(memory.attachmentFiles->files().at(first.attachments[0].path), "\x89PNG picture");

    const auto request = memory.session->requests().front();
    EXPECT_EQ(request->url.text(), imageURL);
    EXPECT_EQ(request->method, "GET");
    EXPECT_EQ(request->maximumAnswerBytes, 10U << 20U);
    EXPECT_LE(request->totalTimeout, std::chrono::seconds(30));
}

TEST_F(NotificationServiceTest, WithoutAnImageThatCanBeHadThePushIsShownWithoutIt) {
    for (const Value& url : {Value(""), Value("http://"), Value(7), Value("ftp://media.shop.example/coat.png")}) {
        EXPECT_THAT(shown(Map{{"urlImageString", url}}).attachments, IsEmpty());
    }
    for (const auto& answer : {ScriptedAnswer{.status = 404, .body = "not here"}, ScriptedAnswer{.body = ""},
                               ScriptedAnswer::failure(platform::URLErrorKind::timedOut),
                               ScriptedAnswer::failure(platform::URLErrorKind::answerTooLarge)}) {
        memory.session->setDefault(answer);
        EXPECT_THAT(shown(Map{{"urlImageString", imageURL}}).attachments, IsEmpty());
    }
    EXPECT_THAT(memory.console->lines(), IsEmpty());

    memory.session->setDefault({.body = "picture"});
    memory.attachmentFiles->failWrites("no room\nleft");
    EXPECT_THAT(shown(Map{{"urlImageString", imageURL}}).attachments, IsEmpty());
    memory.attachmentFiles->failWrites({});
    memory.attachmentFiles->failAttachments("no picture");
    EXPECT_THAT(shown(Map{{"urlImageString", imageURL}}).attachments, IsEmpty());
    EXPECT_THAT(memory.console->lines(), ElementsAre("error no room left", "error no picture"));
    EXPECT_THAT(memory.attachmentFiles->files(), IsEmpty()) << "what nobody shows is taken away again";
}

TEST_F(NotificationServiceTest, AnExpiryDuringTheFetchHandsBackWhatThereIsAndOnlyThat) {
    memory.session->on({}, [&](const platform::URLRequest&) {
        service->serviceExtensionTimeWillExpire();
        return ScriptedAnswer{.body = "picture, too late"};
    });
    const auto content =
        shown(Map{{"category", ""}, {"badge", Map{{"type", "increase"}, {"value", 2}}}, {"urlImageString", imageURL}});
    EXPECT_EQ(content.sound, NotificationContent::defaultSound);
    EXPECT_EQ(content.categoryIdentifier, "ZentavoNotificationContent");
    EXPECT_EQ(content.badge, 2);
    EXPECT_THAT(content.attachments, IsEmpty());
    EXPECT_THAT(memory.attachmentFiles->files(), IsEmpty());

    service->serviceExtensionTimeWillExpire();                     // again, after the end
    ZentavoNotificationService().serviceExtensionTimeWillExpire(); // and before any push
}

TEST_F(NotificationServiceTest, AnExpiryFromAnotherThreadEndsTheWaiting) {
    memory.session->hold(); // never answered
    std::promise<NotificationContent> delivered;
    std::thread waiting([&] {
        service->didReceive({"n1", push({{"urlImageString", imageURL}})},
                            [&](NotificationContent content) { delivered.set_value(std::move(content)); });
    });
    while (memory.session->count() == 0) { // bounded by the test's own time limit
        std::this_thread::yield();
    }
    service->serviceExtensionTimeWillExpire();
    EXPECT_THAT(delivered.get_future().get().attachments, IsEmpty());
    waiting.join();
}

TEST_F(NotificationServiceTest, APushThatComesMeanwhileLosesNeither) {
    std::vector<std::string> titles;
    memory.session->on({}, [&](const platform::URLRequest&) {
        NotificationContent second;
        second.title = "second";
        service->didReceive({"n2", second}, [&](const NotificationContent& c) { titles.push_back(c.title); });
        return ScriptedAnswer{.body = "picture, too late"};
    });
    NotificationContent first = push({{"urlImageString", imageURL}});
    first.title = "first";
    service->didReceive({"n1", first}, [&](const NotificationContent& content) {
        titles.push_back(content.title);
        EXPECT_THAT(content.attachments, IsEmpty());
    });
    EXPECT_THAT(titles, ElementsAre("first", "second"));
    EXPECT_THAT(memory.attachmentFiles->files(), IsEmpty());
}

/// Files in whose writing the system's time runs out.
class LateFiles final : public platform::AttachmentFiles {
public:
    LateFiles(std::shared_ptr<platform::AttachmentFiles> files, std::function<void()> expire)
        : files_(std::move(files)), expire_(std::move(expire)) {}

    Result<std::string> write(std::string_view folder, std::string_view name, std::string_view bytes) override {
        auto path = files_->write(folder, name, bytes);
        expire_();
        return path;
    }
    Result<platform::NotificationAttachment> attach(std::string identifier, const std::string& path) override {
        return files_->attach(std::move(identifier), path);
    }
    void remove(const std::string& path) override { files_->remove(path); }

private:
    const std::shared_ptr<platform::AttachmentFiles> files_;
    const std::function<void()> expire_;
};

TEST_F(NotificationServiceTest, AnExpiryBetweenFetchAndEndLeavesNoFileBehind) {
    memory.session->setDefault({.body = "picture"});
    memory.platform()->attachmentFiles =
        std::make_shared<LateFiles>(memory.attachmentFiles, [&] { service->serviceExtensionTimeWillExpire(); });
    EXPECT_THAT(shown(Map{{"urlImageString", imageURL}}).attachments, IsEmpty());
    EXPECT_THAT(memory.attachmentFiles->files(), IsEmpty());
}

TEST_F(NotificationServiceTest, WhoeverComesFirstTheHandlerIsCalledOnce) {
    memory.session->setDefault({.body = "picture"});
    for (int round = 0; round < 100; ++round) {
        std::atomic<int> calls = 0;
        std::atomic<bool> go = false;
        std::thread expiring([&] {
            while (!go) {
                std::this_thread::yield();
            }
            service->serviceExtensionTimeWillExpire();
        });
        go = true;
        service->didReceive({"n1", push({{"urlImageString", imageURL}})}, [&](const NotificationContent&) { ++calls; });
        expiring.join();
        ASSERT_EQ(calls, 1);
    }
}

} // namespace
} // namespace zentavo
