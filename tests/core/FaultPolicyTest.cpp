#include "tests/support/SdkTest.h"

namespace zentavo {
namespace {

/// Under `FaultPolicy::contain` a fault ends the operation, and nothing else.
class FaultPolicyTest : public SdkTest {
protected:
    FaultPolicyTest() {
        setFaultPolicy(FaultPolicy::contain, [this](const Fault& fault) { faults.push_back(fault); });
    }

    std::vector<Fault> faults;
};

TEST_F(FaultPolicyTest, APublicCall) {
    sdk->track(CDPEvent("too_early"));
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults[0].entryPoint, "track");
    EXPECT_THAT(faults[0].message, ::testing::HasSubstr("before the first activation"));
    EXPECT_GT(faults[0].line, 0U);
    EXPECT_FALSE(memory.systemLog->entries().empty());
    sdk->trackAppLaunch();
    sdk->trackScreen("Home", "Home page", "main");
    EXPECT_EQ(faults.size(), 3U);

    start();
    sdk->track(CDPEvent("in_time"));
    EXPECT_THAT(eventNames(), ::testing::ElementsAre("in_time"));
}

TEST_F(FaultPolicyTest, NothingThatAPortThrowsLeavesAMember) {
    class Broken : public platform::Preferences, public platform::PreferencesProvider, public platform::Console {
    public:
        std::optional<Value> object(std::string_view) const override { throw std::bad_alloc(); }
        void set(std::string_view, Value) override { throw std::bad_alloc(); }
        void remove(std::string_view) override { throw std::bad_alloc(); }
        void update(std::string_view,
                    const std::function<std::optional<Value>(const std::optional<Value>&)>&) override {
            throw std::bad_alloc();
        }
        void synchronise() override { throw std::bad_alloc(); }
        std::shared_ptr<platform::Preferences> standard() override { throw std::bad_alloc(); }
        std::shared_ptr<platform::Preferences> suite(std::string_view) override { throw std::bad_alloc(); }
        void writeLine(std::string_view) override { throw std::bad_alloc(); }
    };
    const auto broken = std::make_shared<Broken>();
    start();
    CDPEvent event("e");
    sdk->state()->changeAccount([&](Account& account) { account.store = broken; });
    const std::vector<std::pair<const char*, std::function<void()>>> members{
        {"setUid", [&] { sdk->setUid("u"); }},
        {"resetUid", [&] { sdk->resetUid(); }},
        {"getUid", [&] { EXPECT_EQ(sdk->getUid(), ""); }},
        {"setCustomerProperties", [&] { sdk->setCustomerProperties("c", {}); }},
        {"resetCustomer", [&] { sdk->resetCustomer(); }},
        {"getCustomerId", [&] { EXPECT_EQ(sdk->getCustomerId(), ""); }},
        {"getPushUid", [&] { EXPECT_EQ(sdk->getPushUid(), std::nullopt); }},
        {"bodyMap", [&] { EXPECT_EQ(event.bodyMap(), Map()); }},
        {"track", [&] { sdk->track(event); }},
        {"registerForNotification", [&] { sdk->registerForNotification(std::vector<std::uint8_t>{1}); }},
        {"handleDeeplinkURL", [&] { sdk->handleDeeplinkURL(*URL::parse("http://shop.example/?utm=u")); }},
    };
    for (const auto& [name, call] : members) {
        faults.clear();
        EXPECT_NO_THROW(call()) << name;
        ASSERT_EQ(faults.size(), 1U) << name;
        EXPECT_EQ(faults[0].entryPoint, name);
    }

    memory.platform()->preferences = broken;
    memory.platform()->console = broken;
    restart();
    sdk->setDebug(true);
    faults.clear();
    EXPECT_NO_THROW(sdk->log("unheard"));
    EXPECT_NO_THROW(activate());
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_EQ(faults[0].entryPoint, "log");
    EXPECT_EQ(faults[1].entryPoint, "activate");
}

TEST_F(FaultPolicyTest, ACompletion) {
    // The answer to a registration arrives, and the SDK cannot build the event that follows from it.
    start();
    memory.session->on({"POST", "", "/api/app/identify"},
                       testing::ScriptedAnswer{200, R"({"data":{"zentavo_apppush_uid":"p1"}})"});
    Endpoints broken = sdk->endpoints();
    broken.collection = "no url";
    sdk->setEndpoints(broken);
    sdk->registerForNotification(std::vector<std::uint8_t>{1});
    settle();
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults[0].entryPoint, "completion");
    EXPECT_EQ(sdk->getPushUid(), "p1");

    sdk->setEndpoints(Endpoints());
    sdk->track(CDPEvent("after"));
    settle();
    EXPECT_THAT(eventNames(), ::testing::ElementsAre("after"));
}

TEST_F(FaultPolicyTest, AMainQueueBlock) {
    class Faulty : public platform::Application {
    public:
        void registerForRemoteNotifications() override { fatalError("no such service"); }
        void open(const URL&) override {}
    };
    auto interface = *memory.platform()->userInterface();
    interface.application = std::make_shared<Faulty>();
    memory.platform()->attach(interface);
    sdk->requestNotificationPermission();
    settle();
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults[0].entryPoint, "main queue");
}

TEST_F(FaultPolicyTest, TheDefaultStopsTheProcessWithMessageAndPlace) {
    EXPECT_DEATH(
        {
            setFaultPolicy(FaultPolicy::stop);
            sdk->track(CDPEvent("too_early"));
        },
        "before the first activation.*Tracking.cpp");
}

} // namespace
} // namespace zentavo
