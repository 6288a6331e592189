// The notification service between distributor, app and notification centre: real bus, time in the test's hands.

#include "ports/desktop/NotificationServiceHost.h"

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/desktop/ConnectorCall.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/PushJournal.h"
#include "ports/memory/MemoryPlatform.h"
#include "tests/desktop/FakeApp.h"
#include "tests/desktop/FakeDistributor.h"
#include "tests/desktop/OtherProgram.h"
#include "tests/desktop/PrivateBus.h"

namespace zentavo::tests {
namespace {

using desktop::NotificationServiceHost;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using namespace std::chrono_literals;

constexpr const char* service = "com.example.shop.NotificationService";
constexpr const char* endpoint = "https://push.example/up";

class Exclaiming final : public platform::NotificationServiceExtension {
public:
    void didReceive(platform::NotificationRequest request, ContentHandler handler) override {
        request.content.body += "!";
        handler(std::move(request.content));
    }
    void serviceExtensionTimeWillExpire() override {}
};

class NotificationServiceHostTest : public ::testing::Test {
protected:
    NotificationServiceHostTest() { start(); }
    ~NotificationServiceHostTest() override { stop(); }

    void start() {
        client = std::make_unique<desktop::SessionBus>(bus.address());
        host = NotificationServiceHost::make(
            memory.platform(), *client,
            {{"com.example.shop", service, "com.example.shop.NotificationContent"}, "Shop", ""},
            [] { return std::make_shared<Exclaiming>(); },
            {.respond = [this](const platform::NotificationResponse& response) { responses.put(response); },
             .busy = [this] { return busy; },
             .alone = [this] { alone.put(true); },
             .ended = [this](bool name) { ended.put(name); }});
        host->start();
        const auto there = std::make_shared<Awaited<bool>>();
        observer.watch(service, [there](bool present) {
            if (present) {
                there->put(true);
            }
        });
        there->next();
    }
    void stop() {
        client.reset();
        host.reset();
        memory.queues->runUntilIdle();
    }
    /// Runs blocks that other threads post, until `done`.
    template <class Condition>
    void settleUntil(Condition done) {
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (!done() && std::chrono::steady_clock::now() < end) {
            memory.queues->runUntilIdle();
            std::this_thread::yield();
        }
        EXPECT_TRUE(done());
    }
    /// What the bus was asked before has happened then, and its blocks have run.
    void settle() {
        const auto done = std::make_shared<Awaited<bool>>();
        client->run([done] { done->put(true); });
        done->next();
        memory.queues->runUntilIdle();
    }
    std::string registered() {
        app->call("Register");
        const std::string token = distributor.asked.next().token;
        EXPECT_EQ(distributor.newEndpoint(1, service, token, endpoint), "");
        EXPECT_EQ(app->told().next(), std::string("TokenChanged ") + endpoint);
        return token;
    }
    std::vector<std::string> bodies() const {
        std::vector<std::string> found;
        for (const auto& each : memory.userNotifications->shown()) {
            found.push_back(each.request.content.body);
        }
        return found;
    }

    PrivateBus bus;
    testing::MemoryPlatform memory{service};
    FakeDistributor distributor{bus.address(), "One", 1};
    desktop::SessionBus observer{bus.address()};
    std::unique_ptr<FakeApp> app = std::make_unique<FakeApp>(bus.address());
    Awaited<platform::NotificationResponse> responses;
    Awaited<bool> ended;
    Awaited<bool> alone;
    bool busy = false;
    std::unique_ptr<desktop::SessionBus> client;
    std::shared_ptr<NotificationServiceHost> host;
};

TEST_F(NotificationServiceHostTest, APushGoesThroughTheExtensionOnlyWhereItMay) {
    const std::string token = registered();
    distributor.message(1, service, token, R"({"aps":{"alert":"one","mutable-content":1}})");
    distributor.message(1, service, token, R"({"aps":{"alert":"two"}})");
    distributor.message(1, service, token, R"({"aps":{"content-available":1}})");
    distributor.message(1, service, token, "no JSON");
    distributor.message(1, service, token, R"({"aps":{"badge":4}})");
    settleUntil([&] { return memory.userNotifications->badgeCount() == 4; });
    EXPECT_THAT(bodies(), ElementsAre("one!", "two"));
    ASSERT_EQ(memory.systemLog->entries().size(), 1U);
    EXPECT_THAT(memory.systemLog->entries()[0].message, HasSubstr("says nothing that can be read"));
}

TEST_F(NotificationServiceHostTest, ATokenThatCameWhileTheAppWasAwayIsToldWhenItAsks) {
    const std::string token = registered();
    app.reset();
    EXPECT_EQ(distributor.newEndpoint(1, service, token, "https://push.example/new"), "");
    app = std::make_unique<FakeApp>(bus.address());
    app->call("Register");
    EXPECT_EQ(app->told().next(), "TokenChanged https://push.example/new");
    EXPECT_EQ(distributor.unregistered(1, service, token), "");
    std::string next = app->told().next();
    if (next.starts_with("TokenChanged ")) { // the first telling was still under way when the app came back
        next = app->told().next();
    }
    EXPECT_EQ(next, "RegistrationFailed the distributor has ended the registration");
}

TEST_F(NotificationServiceHostTest, WhatIsShownCanBeListedTakenAwayAndAnswered) {
    const std::string token = registered();
    distributor.message(1, service, token, R"({"aps":{"alert":"one"}})");
    settleUntil([&] { return bodies().size() == 1; });
    const platform::Notification shown = memory.userNotifications->shown()[0];

    // Answered from the test's queues, so the call waits on a thread of its own.
    desktop::Variant listed;
    std::atomic<bool> done = false;
    std::thread listing([&] {
        listed = app->call("Delivered", nullptr, "(as)");
        done = true;
    });
    settleUntil([&] { return done.load(); });
    listing.join();
    ASSERT_TRUE(listed);
    const char* text = nullptr;
    g_variant_get_child(g_variant_get_child_value(listed.get(), 0), 0, "&s", &text);
    EXPECT_EQ(desktop::codec::readNotification(text).value(), shown);

    const platform::NotificationResponse response{shown, "again"};
    app->call("Respond", g_variant_new("(s)", desktop::codec::write(response)->c_str()));
    EXPECT_EQ(responses.next(), response);
    for (const char* id : {"one", "one", "two"}) { // the second is the first once more, and the third is not
        app->call("Respond", g_variant_new("(s)", desktop::codec::write({shown, id}, id)->c_str()));
    }
    EXPECT_EQ(responses.next().actionIdentifier, "one");
    EXPECT_EQ(responses.next().actionIdentifier, "two");
    app->call("Respond", g_variant_new("(s)", "{}"));
    EXPECT_THAT(app->refused, HasSubstr("actionIdentifier"));

    app->call("RemoveDelivered", g_variant_new_parsed("([%s],)", shown.request.identifier.c_str()));
    EXPECT_EQ(app->refused, "");
    EXPECT_THAT(bodies(), IsEmpty());
}

TEST_F(NotificationServiceHostTest, TheAppAndTheContentExtensionAreHeardAndNobodyElse) {
    const TextMethod respond{service, desktop::service_interface::path, desktop::service_interface::name, "Respond"};
    const std::string call =
        "call=" + desktop::codec::write(platform::NotificationResponse{{{"a", {}}}, "again"}).value();
    EXPECT_THAT(runOtherProgram(bus.address(), respond, {call}), ElementsAre(accessDenied));
    EXPECT_TRUE(responses.empty());
    EXPECT_THAT(runOtherProgram(bus.address(), respond, {"own=com.example.shop.NotificationContent", call}),
                ElementsAre("ok"));
    app.reset();
    EXPECT_THAT(runOtherProgram(bus.address(), respond, {"own=com.example.shop", call}), ElementsAre("ok"));
    EXPECT_EQ(responses.next().actionIdentifier, "again");
}

TEST_F(NotificationServiceHostTest, WhoeverKnowsTheTokenMustAlsoBeTheDistributor) {
    const std::string token = registered();
    const TextMethod unregistered{service, desktop::ConnectorCall::path, "org.unifiedpush.Connector1", "Unregistered"};
    EXPECT_THAT(runOtherProgram(bus.address(), unregistered,
                                {"call=" + token, "own=org.unifiedpush.Distributor.Two", "call=" + token}),
                ElementsAre(accessDenied, accessDenied));
    EXPECT_EQ(distributor.message(1, service, token, R"({"aps":{"alert":"one"}})"), "");
    settleUntil([&] { return bodies().size() == 1; });
}

TEST_F(NotificationServiceHostTest, ItEndsAfterAQuietMinuteInWhichNothingIsShown) {
    const std::string token = registered();
    distributor.message(1, service, token, R"({"aps":{"alert":"one"}})");
    settleUntil([&] { return bodies().size() == 1; });
    memory.queues->advance(3min);
    settle();
    EXPECT_TRUE(ended.empty());

    busy = true;
    memory.userNotifications->removeDelivered({memory.userNotifications->shown()[0].request.identifier});
    memory.queues->advance(2min);
    settle();
    EXPECT_TRUE(ended.empty());

    busy = false;
    memory.queues->advance(30s);
    app->call("Register"); // a minute from now on
    EXPECT_EQ(app->told().next(), std::string("TokenChanged ") + endpoint);
    settle();
    memory.queues->advance(59s);
    settle();
    EXPECT_TRUE(ended.empty());

    const auto left = std::make_shared<Awaited<bool>>();
    observer.watch(service, [left](bool present) {
        if (!present) {
            left->put(true);
        }
    });
    memory.queues->advance(2min);
    settleUntil([&] { return !ended.empty(); });
    EXPECT_TRUE(ended.next());
    EXPECT_TRUE(left->next());
    stop();

    start(); // whoever calls has it started anew
    EXPECT_EQ(distributor.asked.next().token, token);
}

TEST_F(NotificationServiceHostTest, WhatAProcessWasKilledOverTheNextOneShows) {
    const std::string token = registered();
    const auto suite = memory.platform()->preferences->standard();
    EXPECT_EQ(distributor.message(1, service, token, R"({"aps":{"alert":"one","mutable-content":1}})", "m1"), "");
    const desktop::PushJournal journal(suite);
    const auto kept = journal.takeUp({}).entries;
    ASSERT_EQ(kept.size(), 1U) << "the distributor was answered";
    settleUntil([&] { return bodies().size() == 1; });
    EXPECT_EQ(memory.userNotifications->shown()[0].request.identifier, kept[0].identifier) << "as the extension saw it";
    settleUntil([&] { return journal.takeUp({}).entries.empty(); });
    stop();

    journal.add("left", R"({"aps":{"alert":"two"}})");
    start();
    settleUntil([&] { return bodies().size() == 2; });
    settleUntil([&] { return journal.takeUp({}).entries.empty(); });
    EXPECT_THAT(bodies(), ElementsAre("one!", "two"));
}

TEST_F(NotificationServiceHostTest, ItSaysWhenNoProcessBeforeItIsAtWorkAnyMore) {
    registered();
    settle();
    memory.queues->advance(29s);
    EXPECT_TRUE(alone.empty());
    memory.queues->advance(1s);
    EXPECT_TRUE(alone.next());
    memory.queues->advance(30s);
    EXPECT_TRUE(alone.empty()); // once
}

TEST_F(NotificationServiceHostTest, ASignalEndsItWithWhatIsUnderWay) {
    const std::string token = registered();
    distributor.message(1, service, token, R"({"aps":{"alert":"one","mutable-content":1}})");
    host->end();
    settleUntil([&] { return !ended.empty(); });
    EXPECT_TRUE(ended.next());
    EXPECT_THAT(bodies(), ElementsAre("one!"));
    memory.queues->advance(5min);
    EXPECT_TRUE(ended.empty()); // once
}

TEST_F(NotificationServiceHostTest, WithoutABusOrWhereAnotherHasTheNameItEndsAtOnce) {
    for (const std::string& address : {bus.address(), std::string("unix:path=/nowhere/at/all")}) {
        desktop::SessionBus other(address);
        Awaited<bool> over;
        const auto second = NotificationServiceHost::make(
            memory.platform(), other,
            {{"com.example.shop", service, "com.example.shop.NotificationContent"}, "Shop", ""}, {},
            {.respond = {},
             .busy = {},
             .alone = [&over] { over.put(true); },
             .ended = [&over](bool name) { over.put(name); }});
        second->start();
        settleUntil([&] { return !over.empty(); });
        EXPECT_FALSE(over.next());
    }
}

} // namespace
} // namespace zentavo::tests
