#include "tests/push/SamplePush.h"
#include "tests/support/SdkTest.h"
#include "zentavo/push/PushChoices.h"
#include "zentavo/push/ZentavoUNUserNotificationCenter.h"

namespace zentavo {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const char* const suite = "group.com.example.host.zentavo";

/// Notes for each suite that is opened whether the main queue had to wait for it.
class WatchedPreferences final : public platform::PreferencesProvider {
public:
    explicit WatchedPreferences(testing::MemoryPlatform& memory)
        : inner_(memory.preferences), mainQueue_(memory.queues->mainQueue()) {}

    std::shared_ptr<platform::Preferences> standard() override { return inner_->standard(); }
    std::shared_ptr<platform::Preferences> suite(std::string_view name) override {
        onMainQueue.push_back(mainQueue_->isCurrent());
        return inner_->suite(name);
    }

    std::vector<bool> onMainQueue;

private:
    const std::shared_ptr<platform::PreferencesProvider> inner_;
    const std::shared_ptr<platform::MainQueue> mainQueue_;
};

class NotificationDelegateTest : public SdkTest {
protected:
    NotificationDelegateTest() {
        start();
        sdk->setIsDelivery(false);
        sdk->setDebug(true);
        delegate = std::make_shared<ZentavoUNUserNotificationCenter>();
        memory.userNotifications->setDelegate(delegate);
        settle();
    }

    static platform::NotificationResponse answered(Map userInfo,
                                                   const char* action = platform::defaultActionIdentifier) {
        platform::NotificationResponse response;
        response.notification.request.content.title = "Winter sale";
        response.notification.request.content.userInfo = std::move(userInfo);
        response.actionIdentifier = action;
        return response;
    }
    /// The user answers a push, and everything that follows happens.
    void answer(const Map& aps, const char* action = platform::defaultActionIdentifier) {
        memory.userNotifications->respond(answered(Map{{"aps", aps}}, action));
        settle();
    }
    /// What was opened since the last look.
    std::vector<std::string> opened() {
        std::vector<std::string> texts;
        const auto all = memory.application->opened();
        for (; seen_ < all.size(); ++seen_) {
            texts.push_back(all[seen_].text());
        }
        return texts;
    }
    std::vector<std::string> opens(const Map& aps, const char* action = platform::defaultActionIdentifier) {
        answer(aps, action);
        return opened();
    }
    static Map payload(const char* name) {
        return {{"pushId", "p1"}, {"url", "https://shop.example/"}, {"template", name}};
    }

    std::shared_ptr<ZentavoUNUserNotificationCenter> delegate;
    /// What the content extension, a process of its own, has written.
    std::shared_ptr<platform::Preferences> choices = memory.preferences->suite(suite);

private:
    std::size_t seen_ = 0;
};

TEST_F(NotificationDelegateTest, InFrontANotificationIsShownInFull) {
    memory.userNotifications->arrive({});
    settle();
    EXPECT_THAT(memory.userNotifications->presentations(), ElementsAre(7U));
    EXPECT_EQ(memory.session->count(), 0U);
}

TEST_F(NotificationDelegateTest, ADismissalIsToldAndDoesNothingElse) {
    int dismissals = 0;
    delegate->setActionForDismiss([&] { ++dismissals; });
    delegate->setActionForDefault([] { FAIL(); });
    delegate->setActionForCustomDefault([](const std::string&) { FAIL(); });
    answer(fullPayload(), platform::dismissActionIdentifier);
    EXPECT_EQ(dismissals, 1);
    EXPECT_THAT(logged(), ElementsAre("Action dismiss"));
    EXPECT_THAT(opened(), IsEmpty());
    EXPECT_EQ(memory.session->count(), 0U);
    EXPECT_EQ(memory.userNotifications->finishedResponses(), 1U);

    answer(Map{{"no", "payload"}}, platform::dismissActionIdentifier);
    EXPECT_EQ(dismissals, 2);
}

TEST_F(NotificationDelegateTest, AClickFiresItsTrackingURLAndOpensItsURL) {
    memory.session->on({.host = "track.shop.example"},
                       testing::ScriptedAnswer{.body = R"({"utm": {"utm_source": "push"}, "_clk_bc": "k"})"});
    Map push = payload("");
    push.set("trackingClickUrl", "https://track.shop.example/c/p1");
    EXPECT_THAT(opens(push), ElementsAre("https://shop.example/"));
    ASSERT_THAT(memory.session->requests(), SizeIs(1));
    EXPECT_EQ(memory.session->requests()[0]->url.text(), "https://track.shop.example/c/p1");
    EXPECT_THAT(logged(), ElementsAre("<ZENAVO> tracking click ok"));

    for (const char* none : {"", "http://"}) {
        push.set("trackingClickUrl", none);
        EXPECT_THAT(opens(push), ElementsAre("https://shop.example/"));
    }
    push.remove("trackingClickUrl");
    EXPECT_THAT(opens(push), ElementsAre("https://shop.example/"));
    EXPECT_THAT(memory.session->requests(), SizeIs(1));
    EXPECT_EQ(memory.userNotifications->finishedResponses(), 4U);
}

TEST_F(NotificationDelegateTest, ChoicesThatCountForEachTemplate) {
    choices->set("p1_url_clicked", "https://shop.example/element");
    choices->set("p1_image_clicked", "https://shop.example/slide");
    choices->set("p2_url_clicked", "https://shop.example/of-another-push");
    for (const auto& [name, url] :
         {std::pair("simple_image_carousel", "slide"), std::pair("rating", "element"),
          std::pair("stylized_basic", "element"), std::pair("basic_notification", "element"),
          std::pair("small_image", "element"), std::pair("text_overlay", ""), std::pair("other", "")}) {
        EXPECT_THAT(opens(payload(name)), ElementsAre(std::string("https://shop.example/") + url)) << name;
    }

    choices->set("p1_url_clicked", "");
    choices->set("p1_image_clicked", "");
    for (const char* name : {"simple_image_carousel", "rating", "small_image"}) {
        EXPECT_THAT(opens(payload(name)), ElementsAre("https://shop.example/")) << "an empty choice is none: " << name;
    }
    choices->set("p1_url_clicked", "http://");
    EXPECT_THAT(opens(payload("small_image")), IsEmpty()) << "a choice that is no URL is skipped";
    memory.preferences->refuse(suite);
    EXPECT_THAT(opens(payload("small_image")), ElementsAre("https://shop.example/"));
    EXPECT_THAT(opens({{"pushId", "p1"}}), IsEmpty()) << "nothing to open";
}

TEST_F(NotificationDelegateTest, ARatingIsSentBeforeItsURLIsOpened) {
    choices->set("p1_rating", 4);
    Map push = fullPayload();
    push.remove("trackingClickUrl");
    EXPECT_THAT(opens(push), ElementsAre("https://shop.example/sale"));
    ASSERT_THAT(eventNames(), ElementsAre("submit_rating"));
    const Map body = events()[0];
    EXPECT_EQ(*body.find("items"), Value(List()));
    const Map& extra = *body.find("extra")->asMap();
    EXPECT_EQ(*extra.find("rating_scale"), 5);
    EXPECT_EQ(*extra.find("selected_rating"), 4);
    EXPECT_EQ(*extra.find("lead_source_id"), "l1");
    EXPECT_EQ(*extra.find("story"), (Map{{"id", "s1"}}));
    EXPECT_EQ(*extra.find("campaign"), (Map{{"id", "c1"}}));
    EXPECT_EQ(*extra.find("variant"), (Map{{"id", "v1"}}));

    memory.session->clear();
    push = payload("rating");
    push.set("pushId", "p2"); // never rated, and without ids
    answer(push);
    const Map bare = *events().at(0).find("extra")->asMap();
    EXPECT_EQ(*bare.find("rating_scale"), 0);
    EXPECT_EQ(*bare.find("selected_rating"), 0);
    EXPECT_EQ(*bare.find("lead_source_id"), "123");
    EXPECT_FALSE(bare.contains("story") || bare.contains("campaign") || bare.contains("variant"));
}

TEST_F(NotificationDelegateTest, APayloadThatCannotBeReadOpensAndTracksNothingButIsFinished) {
    Map withoutId = fullPayload();
    withoutId.remove("pushId");
    Map wrongDeepDown = fullPayload();
    at(wrongDeepDown, "actionButtons.button1").remove("clickAction");
    Map notJSON = fullPayload();
    notJSON.set("extra", "\xFF");
    for (const Map& aps : {withoutId, wrongDeepDown, notJSON}) {
        answer(aps);
    }
    memory.userNotifications->respond(answered({}));
    memory.userNotifications->respond(answered({{"aps", List()}}));
    settle();
    EXPECT_THAT(opened(), IsEmpty());
    EXPECT_EQ(memory.session->count(), 0U);
    EXPECT_EQ(memory.userNotifications->finishedResponses(), 5U);
    EXPECT_THAT(logged(), ::testing::Contains(AllOf(HasSubstr("pushId"), HasSubstr("found nothing"))));
}

TEST_F(NotificationDelegateTest, ARatingBeforeActivationIsAFaultAfterWhichTheSystemStillHears) {
    std::vector<std::string> faults;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault& fault) { faults.push_back(fault.entryPoint); });
    restart();
    const auto early = std::make_shared<ZentavoUNUserNotificationCenter>();
    memory.userNotifications->setDelegate(early);
    answer(payload("rating"));
    EXPECT_THAT(faults, ::testing::Not(IsEmpty()));
    EXPECT_EQ(memory.userNotifications->finishedResponses(), 1U);
}

TEST_F(NotificationDelegateTest, HostsAreToldOfPushesWithAnImageAnURLAndData) {
    std::vector<Map> told;
    delegate->onNotificationPressed([&](Map notification) { told.push_back(std::move(notification)); });
    const Map push{{"urlImageString", ""}, {"url", "https://shop.example/"}, {"additionalData", Map{{"size", 42}}}};
    answer(push); // not even an id: told all the same
    const Map expected{
        {"title", "Winter sale"}, {"clickURL", "https://shop.example/"}, {"additionalData", Map{{"size", 42}}}};
    EXPECT_THAT(told, ElementsAre(expected));
    for (const char* needed : {"urlImageString", "url", "additionalData"}) {
        Map without = push;
        without.remove(needed);
        answer(without);
        without.set(needed, 1);
        answer(without);
    }
    Map noURL = push;
    noURL.set("url", "http://");
    answer(noURL);
    EXPECT_THAT(told, SizeIs(1));

    answer(push, platform::dismissActionIdentifier);
    EXPECT_THAT(told, SizeIs(2)) << "a dismissal is an answer too";
}

TEST_F(NotificationDelegateTest, AButtonOpensItsOwnURLAndOthersThePayloads) {
    std::vector<std::string> told;
    delegate->setActionForDefault([&] { told.emplace_back("the body"); });
    delegate->setActionForCustomDefault([&](std::string action) { told.push_back(std::move(action)); });
    Map push = fullPayload();
    push.set("template", "small_image");
    choices->set("p1_url_clicked", "https://shop.example/element");
    EXPECT_THAT(opens(push, "later"), ElementsAre("https://shop.example/later"));
    EXPECT_THAT(opens(push, "unknown"), ElementsAre("https://shop.example/element"));
    at(push, "actionButtons.button2").set("url", "");
    EXPECT_THAT(opens(push, "later"), ElementsAre("https://shop.example/element"));
    EXPECT_THAT(opens(push), ElementsAre("https://shop.example/element"));
    EXPECT_THAT(told, ElementsAre("later", "unknown", "later", "the body"));
}

TEST_F(NotificationDelegateTest, TheMainQueueWaitsForNoDiskAndAnswersStayInTheirOrder) {
    const auto watched = std::make_shared<WatchedPreferences>(memory);
    memory.platform()->preferences = watched;
    std::vector<std::string> told;
    delegate->setActionForDefault([&] { told.emplace_back("opened"); });
    delegate->setActionForDismiss([&] { told.emplace_back("dismissed"); });
    memory.userNotifications->respond(answered({{"aps", payload("small_image")}}));
    memory.userNotifications->respond(answered({{"aps", payload("small_image")}}, platform::dismissActionIdentifier));
    settle();
    EXPECT_THAT(told, ElementsAre("opened", "dismissed"));
    EXPECT_THAT(watched->onMainQueue, ElementsAre(false)) << "and a dismissal needs no choice";
    EXPECT_THAT(opened(), SizeIs(1));

    delegate->userNotificationCenter(*memory.userNotifications, answered({{"aps", payload("small_image")}}), nullptr);
    delegate.reset();
    settle();
    EXPECT_THAT(opened(), SizeIs(1)) << "an answer under way keeps its delegate";
}

TEST_F(NotificationDelegateTest, TheClickThatStartsTheAppIsHandledOnce) {
    memory.userNotifications->setDelegate({});
    answer(payload(""));
    EXPECT_THAT(opened(), IsEmpty()) << "nobody to tell yet";

    const auto late = std::make_shared<ZentavoUNUserNotificationCenter>();
    memory.userNotifications->setDelegate(late);
    memory.userNotifications->setDelegate(late); // a host that is careful twice
    settle();
    EXPECT_THAT(opened(), ElementsAre("https://shop.example/"));
    EXPECT_EQ(memory.userNotifications->finishedResponses(), 1U);
}

TEST_F(NotificationDelegateTest, ChoicesOfTheLastThousandPushesAreKept) {
    const auto pushed = [&](std::int64_t number) {
        return PushChoices(*memory.preferences, "p" + std::to_string(number));
    };
    const auto store = memory.preferences->opened(suite);
    const auto kept = [&] { return store->contents().size(); };
    pushed(0).setRating(2);
    EXPECT_EQ(store->synchroniseCount(), 1) << "carried to the medium at once";
    for (std::int64_t i = 0; i < PushChoices::maximumPushes; ++i) {
        pushed(i).setRating(3);
        pushed(i).setClickedURL("https://shop.example/element"); // the same push
    }
    const auto full = kept();
    EXPECT_EQ(pushed(0).rating(), 3);
    pushed(1).setRating(4); // it has its place
    pushed(1000).setClickedImage("https://shop.example/slide");
    EXPECT_EQ(pushed(0).rating(), 0);
    EXPECT_EQ(pushed(0).clickedURL(), std::nullopt);
    EXPECT_EQ(pushed(1).rating(), 4);
    EXPECT_EQ(pushed(1000).clickedImage(), "https://shop.example/slide");
    pushed(1001).setRating(1); // the places are taken in turn
    EXPECT_EQ(pushed(1).rating(), 0);
    EXPECT_EQ(kept(), full - 2);
}

} // namespace
} // namespace zentavo
