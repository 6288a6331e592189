// The notification centre against a notification service that the test plays.

#include "ports/desktop/FreedesktopUserNotifications.h"

#include <atomic>

#include "tests/desktop/NotificationCentreTest.h"

namespace zentavo::tests {
namespace {

using desktop::FreedesktopUserNotifications;
using platform::AuthorizationStatus;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::SizeIs;

using FreedesktopUserNotificationsTest = NotificationCentreTest;

TEST_F(FreedesktopUserNotificationsTest, ShowsInTheOrderInWhichTheyWereAdded) {
    server->hold();
    Seen<int> done;
    for (int i = 0; i < 3; ++i) {
        center->add(request(std::to_string(i)), [&done, i](const auto& error) { done.add(error ? -1 : i); });
    }
    center->removeDelivered({"1"});
    ASSERT_TRUE(until([&] { return server->shown().size() == 1; }));
    settle();
    EXPECT_THAT(server->shown(), SizeIs(1)) << "the next waits for this one's id";
    server->release();
    ASSERT_TRUE(until([&] { return done.count() == 3; }));
    EXPECT_THAT(done.all(), ElementsAre(0, 1, 2));
    EXPECT_THAT(delivered(), ElementsAre("0", "2")) << "one was taken away before it was there";
    EXPECT_THAT(server->shown(), SizeIs(2));
    EXPECT_EQ(server->capabilityQueries(), 1U);
}

TEST_F(FreedesktopUserNotificationsTest, ALaterOneReplacesTheOneWithItsIdentifier) {
    const auto first = file("first");
    const auto second = file("second");
    EXPECT_EQ(add(withFile("a", first)), std::nullopt);
    EXPECT_EQ(add(request("b")), std::nullopt);
    EXPECT_EQ(add(withFile("a", second)), std::nullopt);
    EXPECT_EQ(server->shown().at(2).replaces, idOf(0));
    EXPECT_THAT(delivered(), ElementsAre("b", "a"));
    EXPECT_THAT(memory.attachmentFiles->files(), ElementsAre(::testing::Pair(second, "picture")));
    EXPECT_EQ(add(withFile("a", second)), std::nullopt);
    EXPECT_THAT(memory.attachmentFiles->files(), SizeIs(1)) << "the new one shows the same file";
}

TEST_F(FreedesktopUserNotificationsTest, TellsWhatTheUserDidOnceEach) {
    auto buttons = request("buttons");
    buttons.content.userInfo = {
        {"aps", Map{{"actionButtons", Map{{"button1", Map{{"id", "again"}, {"label", "Buy again"}}}}}}}};
    for (auto& each : {request("opened"), buttons, request("dismissed"), request("expired"), request("closed")}) {
        EXPECT_EQ(add(each), std::nullopt);
    }
    server->press(1, "default"); // another program's
    server->press(idOf(0), "default");
    server->press(idOf(0), "default");
    server->press(idOf(1), "no-such-button");
    server->press(idOf(1), server->shown().at(1).keyOf("Buy again"));
    server->close(idOf(2), 2);
    server->close(idOf(3), 1);
    server->close(idOf(4), 3);
    server->emit("ActionInvoked", desktop::Variant::share(g_variant_new("(s)", "nonsense")));
    server->emit("NotificationClosed", desktop::Variant::share(g_variant_new("(ss)", "non", "sense")));
    settleSignals();
    EXPECT_THAT(delegate->told,
                ElementsAre("opened: zentavo.notification.default", "buttons: zentavo.notification.dismiss",
                            "dismissed: zentavo.notification.dismiss"))
        << "a press that means nothing leaves the notification closed all the same";
    EXPECT_THAT(delivered(), IsEmpty());
}

TEST_F(FreedesktopUserNotificationsTest, TellsAButtonByTheIdThatThePushGaveIt) {
    auto buttons = request("buttons");
    buttons.content.userInfo = {
        {"aps", Map{{"actionButtons", Map{{"button2", Map{{"id", "default"}, {"label", "B"}}}}}}}};
    EXPECT_EQ(add(buttons), std::nullopt);
    server->press(idOf(0), server->shown().at(0).keyOf("B"));
    ASSERT_TRUE(until([&] { return !delegate->told.empty(); }));
    EXPECT_THAT(delegate->told, ElementsAre("buttons: default")) << "not a click on the notification";
}

TEST_F(FreedesktopUserNotificationsTest, ShowsAllOfARichOneWithoutEndingIt) {
    std::vector<std::string> expanded;
    FreedesktopUserNotifications::Parts parts;
    parts.expand = [&](const platform::Notification& notification) {
        expanded.push_back(notification.request.identifier);
    };
    std::atomic<bool> installed = true;
    parts.canExpand = [&] { return installed.load(); };
    makeCenter(std::move(parts));
    auto rich = request("rich");
    rich.content.categoryIdentifier = "ZentavoNotificationContent";
    EXPECT_EQ(add(rich), std::nullopt);
    installed = false;
    auto second = rich;
    second.identifier = "second";
    EXPECT_EQ(add(second), std::nullopt);
    EXPECT_EQ(server->shown().at(1).keyOf("View"), "no button View");
    server->press(idOf(0), server->shown().at(0).keyOf("View"));
    ASSERT_TRUE(until([&] { return !expanded.empty(); }));
    settleSignals();
    EXPECT_THAT(expanded, ElementsAre("rich"));
    EXPECT_THAT(delegate->told, IsEmpty()) << "what the user looks at was not put away";

    center->respond({{rich}, platform::defaultActionIdentifier});
    ASSERT_TRUE(until([&] { return !delegate->told.empty(); }));
    EXPECT_THAT(delegate->told, ElementsAre("rich: zentavo.notification.default"));
}

TEST_F(FreedesktopUserNotificationsTest, OneThatIsOpenedBringsTheAppToTheFront) {
    std::vector<std::string> tokens;
    FreedesktopUserNotifications::Parts parts;
    parts.comeToFront = [&](const std::string& token) {
        tokens.push_back(token + "/" + std::to_string(delegate->told.size()));
    };
    makeCenter(std::move(parts));
    const std::string tooLong(FreedesktopUserNotifications::maximumTokenBytes + 1, 'x');
    for (const std::string& token : {std::string("a"), std::string(), tooLong, std::string("put away")}) {
        EXPECT_EQ(add(request(token)), std::nullopt);
        const std::uint32_t id = server->shown().back().id;
        if (!token.empty()) {
            server->emit("ActivationToken", desktop::Variant::share(g_variant_new("(us)", id, token.c_str())));
        }
        if (token == "put away") {
            server->close(id, desktop::NotificationServer::dismissedByUser);
        } else {
            server->press(id, "default");
        }
    }
    settleSignals();
    center->respond({{request("of the service")}, platform::defaultActionIdentifier, "b"});
    ASSERT_TRUE(until([&] { return delegate->told.size() == 5; }));
    EXPECT_THAT(tokens, ElementsAre("a/0", "/1", "/2", "b/4"));
}

TEST_F(FreedesktopUserNotificationsTest, InFrontTheDelegateDecidesHowItIsShown) {
    bool inFront = false;
    FreedesktopUserNotifications::Parts parts;
    parts.isInFront = [&] { return inFront; };
    makeCenter(std::move(parts));
    Seen<std::string> badges;
    desktop::SessionBus launcher(bus.address());
    launcher.listen("", "", "com.canonical.Unity.LauncherEntry", "Update", [&](const auto&, const auto& values) {
        char* text = g_variant_print(values.get(), FALSE);
        badges.add(text);
        g_free(text);
    });
    settle(launcher);

    auto counted = request("a");
    counted.content.badge = 3;
    delegate->options = 0;
    EXPECT_EQ(add(counted), std::nullopt);
    EXPECT_THAT(delegate->asked, IsEmpty()) << "the app is not in front";
    EXPECT_EQ(server->shown().at(0).hints.count("suppress-sound"), 0U);

    inFront = true;
    counted.content.badge = 4;
    const auto path = file("unseen");
    counted.content.attachments = {{"image", path}};
    EXPECT_EQ(add(counted), std::nullopt);
    EXPECT_THAT(memory.attachmentFiles->files(), IsEmpty()) << "it is not shown";
    delegate->options = platform::presentAlert;
    EXPECT_EQ(add(request("b")), std::nullopt);
    delegate.reset();
    EXPECT_EQ(add(request("c")), std::nullopt);
    ASSERT_THAT(server->shown(), SizeIs(3));
    EXPECT_EQ(server->shown().at(1).hints.at("suppress-sound"), "true");
    EXPECT_EQ(server->shown().at(2).hints.count("suppress-sound"), 0U) << "nobody there to say so";

    center->setBadgeCount(0);
    ASSERT_TRUE(until([&] { return badges.count() == 2; }));
    EXPECT_THAT(
        badges.all(),
        ElementsAre("('application://com.example.shop.desktop', {'count': <int64 3>, 'count-visible': <true>})",
                    "('application://com.example.shop.desktop', {'count': <int64 0>, 'count-visible': <false>})"));
}

TEST_F(FreedesktopUserNotificationsTest, ADelegateThatAnswersTwiceOrForAnEarlierOneDecidesNothing) {
    FreedesktopUserNotifications::Parts parts;
    parts.isInFront = [] { return true; };
    makeCenter(std::move(parts));
    delegate->options.reset();
    Seen<std::optional<std::string>> outcomes;
    for (const char* identifier : {"a", "b"}) {
        center->add(request(identifier), [&](auto error) { outcomes.add(std::move(error)); });
    }
    ASSERT_TRUE(until([&] { return delegate->thinking.size() == 1; }));
    delegate->thinking[0](7);
    delegate->thinking[0](7);
    ASSERT_TRUE(until([&] { return delegate->thinking.size() == 2; }));
    settle();
    EXPECT_THAT(server->shown(), SizeIs(1));
    delegate->thinking[1](0);
    ASSERT_TRUE(until([&] { return outcomes.count() == 2; }));
    EXPECT_THAT(server->shown(), SizeIs(1));
}

TEST_F(FreedesktopUserNotificationsTest, FilesGoWithTheirNotification) {
    for (const char* identifier : {"pressed", "closed", "removed"}) {
        EXPECT_EQ(add(withFile(identifier, file(identifier))), std::nullopt);
    }
    ASSERT_THAT(memory.attachmentFiles->files(), SizeIs(3));
    server->press(idOf(0), "default");
    server->close(idOf(1), 1);
    center->removeDelivered({"removed", "unknown"});
    EXPECT_TRUE(until([&] { return memory.attachmentFiles->files().empty(); }));
    server->refuse("no room");
    EXPECT_THAT(add(withFile("refused", file("refused"))), Optional(HasSubstr("no room")));
    EXPECT_THAT(memory.attachmentFiles->files(), IsEmpty());
}

TEST_F(FreedesktopUserNotificationsTest, OfTooManyTheOldestGo) {
    Seen<bool> done;
    const std::size_t most = FreedesktopUserNotifications::maximumShown;
    for (std::size_t i = 0; i < most; ++i) {
        center->add(request(std::to_string(i)), [&](const auto& error) { done.add(!error); });
    }
    ASSERT_TRUE(until([&] { return done.count() == most; }));
    EXPECT_EQ(add(request("last")), std::nullopt);
    EXPECT_THAT(delivered(), SizeIs(most));
    EXPECT_EQ(delivered().front(), "1");
    EXPECT_TRUE(until([&] { return !server->closed().empty(); }));
    EXPECT_THAT(server->closed(), ElementsAre(idOf(0)));
}

TEST_F(FreedesktopUserNotificationsTest, AServiceThatEndsTakesAlongWhatItShowed) {
    EXPECT_EQ(add(withFile("a", file("a"))), std::nullopt);
    server.reset();
    EXPECT_TRUE(until([&] { return memory.attachmentFiles->files().empty(); }));
    EXPECT_THAT(delivered(), IsEmpty());
    EXPECT_THAT(add(request("b")), Optional(HasSubstr("not shown")));

    server.emplace(bus.address(), std::vector<std::string>{"body"});
    settle();
    EXPECT_EQ(add(request("a")), std::nullopt);
    EXPECT_EQ(server->shown().at(0).replaces, 0U) << "ids of another service mean nothing";
    EXPECT_THAT(server->shown().at(0).actions, IsEmpty()) << "it can show none";
    EXPECT_THAT(delegate->told, IsEmpty());
}

TEST_F(FreedesktopUserNotificationsTest, TheNumberAndTheCategoriesOutliveTheProcessThatSetThem) {
    using Side = desktop::NotificationSuite::Side;
    std::shared_ptr<desktop::NotificationSuite> suite;
    const auto restart = [&](Side side) {
        suite = std::make_shared<desktop::NotificationSuite>(memory.platform()->preferences, "com.example.shop", side);
        FreedesktopUserNotifications::Parts parts;
        parts.suite = suite;
        makeCenter(std::move(parts));
    };
    restart(Side::app);
    center->setBadgeCount(3);
    center->addCategory({"order", {{"old", "Old"}}});

    restart(Side::app);
    center->addCategory({"order", {{"track", "Track"}}});
    center->addCategory({"order", {{"late", "Late"}}});
    center->addCategory({"other", {{"x", "X"}}});
    settle(); // what these have said is over
    Seen<std::string> badges;
    desktop::SessionBus launcher(bus.address());
    launcher.listen("", "", "com.canonical.Unity.LauncherEntry", "Update",
                    [&](const std::string&, const desktop::Variant& update) {
                        char* text = g_variant_print(update.get(), FALSE);
                        badges.add(text);
                        g_free(text);
                    });
    settle(launcher);
    restart(Side::notificationService);
    center->addCategory({"order", {}});
    EXPECT_TRUE(until([&] { return badges.count() == 1; }));
    EXPECT_THAT(badges.all().at(0), HasSubstr("3"));
    auto order = request("a");
    order.content.categoryIdentifier = "order";
    EXPECT_EQ(add(order), std::nullopt);
    EXPECT_THAT(server->shown().back().actions,
                ElementsAre(std::pair("default", "Open"), std::pair("button1", "Track")));

    center->setBadgeCount(0);
    settle();
    EXPECT_EQ(suite->badge(), 0);
    for (std::size_t i = 0; i <= desktop::NotificationSuite::maximumCategories; ++i) {
        suite->addCategory({std::to_string(i), {}});
    }
    EXPECT_EQ(suite->categories().size(), desktop::NotificationSuite::maximumCategories);
    EXPECT_EQ(suite->categories().front().identifier, "1");
}

TEST_F(FreedesktopUserNotificationsTest, PermissionIsThatAServiceIsThereOrWouldBeStarted) {
    const auto status = [&] {
        Seen<AuthorizationStatus> statuses;
        center->settings([&](auto each) { statuses.add(each); });
        EXPECT_TRUE(until([&] { return statuses.count() == 1; }));
        return statuses.all().at(0);
    };
    const auto requested = [&] {
        Seen<std::pair<bool, std::optional<std::string>>> outcomes;
        center->requestAuthorization(7, [&](bool granted, auto error) { outcomes.add({granted, std::move(error)}); });
        EXPECT_TRUE(until([&] { return outcomes.count() == 1; }));
        return outcomes.all().at(0);
    };
    EXPECT_EQ(status(), AuthorizationStatus::authorized);
    EXPECT_EQ(requested(), std::pair(true, std::optional<std::string>()));
    server.reset();
    EXPECT_TRUE(until([&] { return status() == AuthorizationStatus::denied; }));
    EXPECT_EQ(requested(), std::pair(false, std::optional<std::string>()));

    const PrivateBus other({PrivateBus::Startable{"org.freedesktop.Notifications", "/bin/false"}});
    session = std::make_shared<desktop::SessionBus>(other.address());
    makeCenter({});
    EXPECT_EQ(status(), AuthorizationStatus::authorized);
    EXPECT_NE(add(request("a")), std::nullopt) << "its program ends at once";

    session = std::make_shared<desktop::SessionBus>("unix:path=/nowhere/at/all");
    makeCenter({});
    EXPECT_EQ(status(), AuthorizationStatus::denied);
    EXPECT_THAT(requested().second, Optional(HasSubstr("no message bus")));
    Seen<std::optional<std::string>> outcomes;
    center->add(withFile("a", file("a")), [&](auto error) { outcomes.add(std::move(error)); });
    center->setBadgeCount(1);
    EXPECT_TRUE(until([&] { return outcomes.count() == 1; }));
    EXPECT_THAT(outcomes.all().at(0), Optional(HasSubstr("no message bus")));
    EXPECT_TRUE(until([&] { return memory.attachmentFiles->files().empty(); }));
}

} // namespace
} // namespace zentavo::tests
