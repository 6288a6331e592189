// The notification service's delegate, which is the app in another process.

#include "ports/desktop/ForwardingDelegate.h"

#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/TakeName.h"

namespace zentavo::tests {
namespace {

using desktop::ForwardingDelegate;
using desktop::MethodCall;
using desktop::SessionBus;
using ::testing::ElementsAre;

constexpr const char* appName = "com.example.shop";

/// The app, at its name once it is made.
class FakeApp {
public:
    explicit FakeApp(const std::string& address, bool speaks = true) : bus_(address) {
        if (speaks) {
            speak();
        }
        takeName(bus_, appName);
    }
    void speak() {
        bus_.serve(desktop::app_interface::path, desktop::app_interface::xml, [this](const MethodCall& call) {
            const char* text = nullptr;
            const desktop::Variant parameters = call.parameters();
            g_variant_get(parameters.get(), "(&s)", &text);
            if (call.method() == "WillPresent") {
                return call.answer(desktop::Variant::share(g_variant_new("(u)", 0xFFFFFFF9U)));
            }
            const auto response = desktop::codec::readResponse(text).value().response;
            if (response.actionIdentifier == "refused") {
                return call.refuseArguments("of another version");
            }
            told.add(response.notification.request.identifier);
            call.answer();
        });
    }

    Seen<std::string> told;

private:
    SessionBus bus_;
};

class ForwardingDelegateTest : public DesktopTest {
protected:
    void respond(const std::string& identifier, const std::string& action = "x") {
        Seen<bool> handedOver;
        delegate->userNotificationCenter(*memory.userNotifications, {{request(identifier)}, action},
                                         [&] { handedOver.add(true); });
        EXPECT_TRUE(until([&] { return handedOver.count() == 1; }));
    }
    std::uint32_t ask(platform::Notification notification) {
        Seen<std::uint32_t> options;
        delegate->userNotificationCenter(*memory.userNotifications, notification,
                                         [&](std::uint32_t each) { options.add(each); });
        EXPECT_TRUE(until([&] { return options.count() == 1; }));
        return options.all().at(0);
    }

    const std::shared_ptr<ForwardingDelegate> delegate = ForwardingDelegate::make(session, appName, *memory.platform());
};

TEST_F(ForwardingDelegateTest, AsksAnAppThatRuns) {
    EXPECT_EQ(ask({request("a")}), 7U) << "nobody there";
    FakeApp app(bus.address());
    EXPECT_TRUE(until([&] { return ask({request("a")}) == 1U; })) << "of what it says, what there is";
    auto bad = request("\xFF");
    EXPECT_EQ(ask({bad}), 7U);
    respond("\xFF"); // is dropped with a line in the log
    EXPECT_EQ(delegate->waiting(), 0U);
}

TEST_F(ForwardingDelegateTest, WhatCannotBeToldWaitsForTheApp) {
    const std::size_t most = ForwardingDelegate::maximumWaiting;
    for (std::size_t i = 0; i < most + 1; ++i) {
        respond(std::to_string(i));
    }
    EXPECT_EQ(delegate->waiting(), most);
    FakeApp app(bus.address());
    ASSERT_TRUE(until([&] { return delegate->waiting() == 0; }));
    const auto told = app.told.all();
    ASSERT_EQ(told.size(), most);
    for (std::size_t i = 1; i < most; ++i) {
        EXPECT_EQ(std::stoi(told[i]), static_cast<int>(i) + 1) << "in order";
    }
    respond("then");
    ASSERT_TRUE(until([&] { return delegate->waiting() == 0; }));
    EXPECT_EQ(app.told.all().back(), "then");
    EXPECT_EQ(app.told.count(), most + 1) << "each once";
}

TEST_F(ForwardingDelegateTest, AnAppThatHasItsNameAndNothingElseYetIsToldLater) {
    FakeApp app(bus.address(), false);
    ASSERT_TRUE(until([&] {
        return ForwardingDelegateTest::DesktopTest::ask({"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                         "org.freedesktop.DBus", "GetNameOwner",
                                                         desktop::Variant::share(g_variant_new("(s)", appName)), "(s)"})
            .ok();
    }));
    respond("a");
    ASSERT_TRUE(until([&] { return !memory.systemLog->entries().empty(); }));
    EXPECT_EQ(delegate->waiting(), 1U);
    app.speak();
    ASSERT_TRUE(until([&] { return delegate->waiting() == 0; }));
    EXPECT_THAT(app.told.all(), ElementsAre("a"));
}

TEST_F(ForwardingDelegateTest, AnAppThatSaysItIsReadyIsToldAtOnce) {
    FakeApp app(bus.address(), false);
    respond("a");
    ASSERT_TRUE(until([&] { return !memory.systemLog->entries().empty(); }));
    app.speak();
    delegate->tellNow();
    delegate->tellNow();
    ASSERT_TRUE(until([&] { return delegate->waiting() == 0; }));
    settle();
    EXPECT_THAT(app.told.all(), ElementsAre("a"));
}

TEST_F(ForwardingDelegateTest, WhatNobodyWillTakeHoldsUpNothing) {
    respond("nobody there", platform::dismissActionIdentifier);
    ASSERT_TRUE(until([&] { return delegate->waiting() == 0; }));
    respond("a", "refused");
    respond("b");
    respond("c", platform::dismissActionIdentifier);
    EXPECT_EQ(delegate->waiting(), 3U);
    FakeApp app(bus.address());
    ASSERT_TRUE(until([&] { return delegate->waiting() == 0; }));
    EXPECT_THAT(app.told.all(), ElementsAre("b", "c"));
}

TEST_F(ForwardingDelegateTest, WhatIsTooOldIsNotToldAnyMore) {
    respond("old");
    ASSERT_TRUE(until([&] { return !memory.systemLog->entries().empty(); })) << "the app cannot be started";
    memory.queues->advance(ForwardingDelegate::maximumAge - std::chrono::seconds(1));
    respond("young");
    EXPECT_EQ(delegate->waiting(), 2U);
    memory.queues->advance(std::chrono::seconds(1));
    ASSERT_TRUE(until([&] { return delegate->waiting() == 1; }));
    EXPECT_THAT(memory.systemLog->entries().back().message, ::testing::HasSubstr("in time"));
    FakeApp app(bus.address());
    ASSERT_TRUE(until([&] { return delegate->waiting() == 0; }));
    EXPECT_THAT(app.told.all(), ElementsAre("young"));
}

TEST_F(ForwardingDelegateTest, AClickStartsTheApp) {
    const auto started = bus.folder() / "started";
    const PrivateBus starting(
        {PrivateBus::Startable{appName, "/bin/sh -c \"touch " + started.string() + "; exit 1\""}});
    session = std::make_shared<SessionBus>(starting.address());
    const auto starter = ForwardingDelegate::make(session, appName, *memory.platform());
    starter->userNotificationCenter(*memory.userNotifications, platform::Notification{request("a")}, [](auto) {});
    starter->userNotificationCenter(*memory.userNotifications, {{request("a")}, platform::dismissActionIdentifier},
                                    [] {});
    ASSERT_TRUE(until([&] { return starter->waiting() == 0; }));
    EXPECT_FALSE(std::filesystem::exists(started)) << "neither to ask it nor to say that one was put away";
    starter->userNotificationCenter(*memory.userNotifications, {{request("a")}, "x"}, [] {});
    ASSERT_TRUE(until([&] { return std::filesystem::exists(started); }));
    ASSERT_TRUE(until([&] { return !memory.systemLog->entries().empty(); }));
    EXPECT_EQ(starter->waiting(), 1U) << "it ended without listening";
}

} // namespace
} // namespace zentavo::tests
