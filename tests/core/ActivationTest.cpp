#include "tests/support/SdkTest.h"

namespace zentavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ActivationTest : public SdkTest {};

TEST_F(ActivationTest, FirstStartFillsAFreshStoreAndSendsTheInstallEventOnce) {
    activate();
    settle();
    EXPECT_EQ(store()->string(keys().visitorType), "new");
    EXPECT_EQ(store()->string(keys().portalId), "1001");
    EXPECT_EQ(store()->string(keys().propsId), "555");
    EXPECT_EQ(store()->string(keys().appInstall), "installed");
    EXPECT_EQ(memory.preferences->synchroniseCount(), 1);
    ASSERT_THAT(eventNames(), ElementsAre("app_install"));
    const Map body = events().front();
    EXPECT_EQ(*body.find("items"), Value(List()));
    EXPECT_EQ(*body.find("dims"), Value(Map()));
    EXPECT_EQ(*body.find("extra"), Value(Map{{"identify_type", "predict"}, {"visitor_type", "new"}}));
}

TEST_F(ActivationTest, LaterStartsReturnAndInstallNothing) {
    activate();
    settle();
    activate("2002"); // again in the same process: the new values hold
    EXPECT_EQ(store()->string(keys().visitorType), "return");
    EXPECT_EQ(sdk->getPortalId(), "2002");
    restart();
    activate();
    settle();
    EXPECT_EQ(store()->string(keys().visitorType), "return");
    EXPECT_THAT(eventNames(), ElementsAre("app_install"));
}

TEST_F(ActivationTest, ARefusedSuiteFallsBackToTheStandardOne) {
    memory.preferences->refuse("group.shop");
    activate();
    EXPECT_EQ(memory.preferences->standard()->string(keys().visitorType), "new");
    EXPECT_EQ(sdk->getAppGroupId(), "group.shop");
}

TEST_F(ActivationTest, TheInstallEventIsSentBeforeItIsWrittenDown) {
    // A process that dies in between sends it twice rather than never.
    class Witness : public platform::URLSession {
    public:
        std::shared_ptr<platform::URLTask> start(std::shared_ptr<const platform::URLRequest>,
                                                 std::shared_ptr<platform::DispatchQueue>, Completion) override {
            installedWhenSent = sdk->state()->store()->object(sdk->state()->keys.appInstall).has_value();
            return nullptr;
        }
        Zentavo* sdk = nullptr;
        std::optional<bool> installedWhenSent;
    };
    const auto witness = std::make_shared<Witness>();
    witness->sdk = sdk.get();
    memory.platform()->urlSession = witness;
    activate();
    EXPECT_EQ(witness->installedWhenSent, false);
}

TEST_F(ActivationTest, AskingForPermissionAgainNeedsAnEarlierYes) {
    activate();
    settle();
    EXPECT_THAT(memory.userNotifications->requests(), IsEmpty());

    memory.userNotifications->setStatus(platform::AuthorizationStatus::authorized);
    sdk->setDebug(true);
    activate();
    settle();
    EXPECT_THAT(memory.userNotifications->requests(), ElementsAre(7U));
    EXPECT_EQ(memory.application->registrations(), 1U);
    EXPECT_THAT(logged(), ::testing::Contains("Get Permission For PushNotifications with granted = true"));
}

TEST_F(ActivationTest, TheLogSpeaksOnlyUnderDebug) {
    int loggerCalls = 0;
    sdk->setLogger([&](const std::string&) { ++loggerCalls; });
    activate();
    sdk->log("nobody hears this");
    settle();
    EXPECT_THAT(memory.console->lines(), IsEmpty());

    sdk->setDebug(true);
    memory.clock->setUTCOffset(std::chrono::hours(2));
    activate();
    EXPECT_THAT(memory.console->lines(), ElementsAre("<ZENTAVO> - 15.01.26 - 14:00:00: "
                                                     "Zentavo activate. Configurations received!"));
    EXPECT_EQ(loggerCalls, 0);

    memory.console->clear();
    sdk->log("a\nb\r\x1B[2Jc");
    EXPECT_THAT(memory.console->lines(), ElementsAre("<ZENTAVO> - 15.01.26 - 14:00:00: a b  [2Jc")); // never two lines
}

TEST_F(ActivationTest, TheBundleIdentifierIsTheAppsAlsoInsideItsExtension) {
    memory.bundles->mainBundle()->set("CFBundleIdentifier", "com.example.shop");
    EXPECT_EQ(Zentavo::getBundleId(), "com.example.shop");

    testing::MemoryPlatform inExtension;
    const auto bundles =
        std::make_shared<testing::MemoryBundles>("/apps/Shop.app/PlugIns/Push.appex", "com.example.push");
    inExtension.platform()->bundles = bundles;
    Zentavo::setShared(std::make_shared<Zentavo>(inExtension.platform()));
    EXPECT_EQ(Zentavo::getBundleId(), "com.example.push"); // no app around it: the extension's own
    bundles->add("/apps/Shop.app")->set("CFBundleIdentifier", "com.example.shop");
    EXPECT_EQ(Zentavo::getBundleId(), "com.example.shop");
    // Keys are those of the running process all the same.
    EXPECT_EQ(Zentavo::VisitorIdKey(), "com.example.push.ZentavoVisitorId");
}

TEST_F(ActivationTest, FlagsAndCallbacksAreKept) {
    EXPECT_TRUE(sdk->isDelivery());
    EXPECT_FALSE(sdk->isShowingTemplate());
    EXPECT_TRUE(sdk->isAssociatedUTM());
    sdk->setIsDelivery(false);
    EXPECT_FALSE(sdk->isDelivery());
    std::string route;
    sdk->setHandleChangeRouteTemplate([&](std::string to) { route = std::move(to); });
    sdk->callbackHandleRedirectTemplate()("/cart");
    EXPECT_EQ(route, "/cart");
}

} // namespace
} // namespace zentavo
