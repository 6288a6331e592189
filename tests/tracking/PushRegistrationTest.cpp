#include <utility>

#include "tests/support/Golden.h"
#include "tests/support/SdkTest.h"

namespace zentavo {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class PushRegistrationTest : public SdkTest {
protected:
    PushRegistrationTest() {
        memory.session->on({"POST", "", "/api/app/identify"},
                           testing::ScriptedAnswer{200, R"({"data":{"zentavo_apppush_uid":"push-1"}})"});
    }

    void registerToken(std::vector<std::uint8_t> token = {0x0A, 0xFF}) {
        sdk->registerForNotification(token);
        settle();
    }
    std::size_t registrations() { return sent("/api/app/identify").size(); }
};

TEST_F(PushRegistrationTest, ATokenIsIdentifiedAndTheSubscriptionTracked) {
    start();
    sdk->setCustomerProperties("c1", {});
    registerToken();
    const auto requests = sent("/api/app/identify");
    ASSERT_EQ(requests.size(), 1U);
    expectGolden("push-identify", bodyOf(*requests[0]));
    EXPECT_EQ(sdk->getPushUid(), "push-1");
    ASSERT_THAT(eventNames(), ElementsAre("app_push_subscribe"));
    const Map body = events()[0];
    EXPECT_EQ(*body.find("extra")->asMap()->find("zentavo_apppush_uid"), "push-1");
    EXPECT_EQ(*body.find("dims")->asMap()->find("customers"),
              Value(Map{{"customer_id", "c1"}, {"update_mode", "update"}}));
}

TEST_F(PushRegistrationTest, AnUnchangedTokenWaitsFiveMinutesAndAChangedOneDoesNot) {
    start();
    registerToken({1});
    registerToken({1});
    EXPECT_EQ(registrations(), 1U);
    registerToken({2});
    EXPECT_EQ(registrations(), 2U);
    memory.clock->advance(299s);
    registerToken({2});
    EXPECT_EQ(registrations(), 2U);
    memory.clock->advance(1s);
    registerToken({2});
    EXPECT_EQ(registrations(), 3U);
}

TEST_F(PushRegistrationTest, AFailedRegistrationDoesNotStartThePauseAndIsRepeated) {
    start();
    sdk->setDebug(true);
    memory.session->on({"POST", "", "/api/app/identify"},
                       testing::ScriptedAnswer::failure(platform::URLErrorKind::cannotConnect), 1);
    registerToken();
    EXPECT_THAT(logged(), ElementsAre(::testing::HasSubstr("/api/app/identify is sent again in 60 s")));
    EXPECT_EQ(registrations(), 1U);
    EXPECT_EQ(store()->object(keys().operationTime), std::nullopt);
    memory.queues->advance(60s);
    EXPECT_EQ(registrations(), 2U);
    registerToken();
    EXPECT_EQ(registrations(), 3U);
}

TEST_F(PushRegistrationTest, WithoutStoreAccountOrNumberNothingIsSent) {
    sdk->setDebug(true);
    registerToken();
    EXPECT_THAT(logged(), ElementsAre("Error: UserDefaults in registerForNotification not found!"));
    start();
    store()->remove(keys().propsId);
    registerToken();
    EXPECT_THAT(logged(), IsEmpty());
    EXPECT_EQ(store()->object(keys().deviceToken), std::nullopt);

    store()->set(keys().propsId, "555");
    for (const char* portal : {"12a", "", " 1", "99999999999999999999"}) {
        store()->set(keys().portalId, portal);
        registerToken();
    }
    EXPECT_EQ(registrations(), 0U);
    EXPECT_EQ(store()->string(keys().deviceToken), "0aff");

    auto facts = memory.device->facts();
    facts.identifierForVendor.reset();
    memory.device->set(facts);
    EXPECT_DEATH(registerToken(), "without an identifier");
}

TEST_F(PushRegistrationTest, OddAnswersAreLoggedAndChangeNothing) {
    start();
    sdk->setDebug(true);
    for (const char* answer : {"", "garbage", "{}", R"({"data":7})", R"({"data":{}})", R"({"data":""})"}) {
        memory.console->clear();
        memory.session->on({"POST", "", "/api/app/identify"}, testing::ScriptedAnswer{200, answer}, 1);
        registerToken();
        EXPECT_EQ(logged().size(), 1U) << answer;
        EXPECT_EQ(sdk->getPushUid(), std::nullopt);
    }
    EXPECT_THAT(events(), IsEmpty());
    memory.session->on({"POST", "", "/api/app/identify"},
                       testing::ScriptedAnswer{200, R"({"data":{"zentavo_apppush_uid":"push-2"}})"}, 1);
    registerToken();
    EXPECT_EQ(sdk->getPushUid(), "push-2");
}

TEST_F(PushRegistrationTest, ARefusalIsNoUidWhateverItHolds) {
    start();
    for (const int status : {300, 400, 500}) {
        memory.session->on({"POST", "", "/api/app/identify"},
                           testing::ScriptedAnswer{status, R"({"code":400,"data":"invalid portal"})"}, 1);
        registerToken();
        EXPECT_EQ(sdk->getPushUid(), std::nullopt) << status;
        EXPECT_EQ(store()->object(keys().operationTime), std::nullopt) << status;
    }
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(PushRegistrationTest, AnAnswerBelongsToTheStoreThatAskedForIt) {
    start();
    const auto earlier = store();
    earlier->set(keys().customerId, "c1");
    sdk->registerForNotification(std::vector<std::uint8_t>{1});
    sdk->activate(Configuration{"1002", "556", "group.other", "43"});
    settle();
    EXPECT_EQ(sdk->getPushUid(), std::nullopt);
    EXPECT_EQ(store()->object(keys().operationTime), std::nullopt);
    EXPECT_EQ(earlier->string(keys().pushUid), "push-1");
    EXPECT_GT(earlier->number(keys().operationTime), 0.0);
    EXPECT_THAT(eventNames(), Not(Contains("app_push_subscribe")));
    EXPECT_EQ(sdk->getCustomerId(), "") << "the customer is the earlier account's";
}

TEST_F(PushRegistrationTest, AnAnswerBelongsToThePortalThatWasAsked) {
    start();
    sdk->registerForNotification(std::vector<std::uint8_t>{1});
    activate("1002");
    settle();
    EXPECT_EQ(sdk->getPushUid(), std::nullopt);
    EXPECT_THAT(eventNames(), Not(Contains("app_push_subscribe")));
    registerToken({1});
    EXPECT_EQ(registrations(), 2U) << "no pause for the portal that has not been told";
    EXPECT_EQ(sdk->getPushUid(), "push-1");
    EXPECT_THAT(eventNames(), ElementsAre("app_push_subscribe"));
}

TEST_F(PushRegistrationTest, ACustomerWhoIsResetMeanwhileStaysReset) {
    /// Plays a host whose `resetCustomer` comes right after the customer was read.
    class Racing : public platform::Preferences {
    public:
        std::optional<Value> object(std::string_view key) const override {
            auto value = inner->object(key);
            if (key == reset) {
                inner->remove(std::exchange(reset, ""));
            }
            return value;
        }
        void set(std::string_view key, Value value) override { inner->set(key, std::move(value)); }
        void remove(std::string_view key) override { inner->remove(key); }
        void update(std::string_view key,
                    const std::function<std::optional<Value>(const std::optional<Value>&)>& change) override {
            inner->update(key, change);
        }
        void synchronise() override { inner->synchronise(); }

        std::shared_ptr<platform::Preferences> inner;
        mutable std::string reset; ///< once
    };
    start();
    sdk->setCustomerProperties("c1", {});
    const auto racing = std::make_shared<Racing>();
    racing->inner = store();
    racing->reset = keys().customerId;
    sdk->state()->changeAccount([&](Account& account) { account.store = racing; });
    registerToken();
    EXPECT_THAT(eventNames(), ElementsAre("app_push_subscribe"));
    EXPECT_EQ(racing->inner->object(keys().customerId), std::nullopt);
}

TEST_F(PushRegistrationTest, PermissionLeadsToRegistrationOnTheMainQueue) {
    sdk->setDebug(true);
    memory.userNotifications->setGrant(false);
    sdk->requestNotificationPermission();
    EXPECT_EQ(memory.application->registrations(), 0U);
    settle();
    EXPECT_THAT(memory.userNotifications->requests(), ElementsAre(7U));
    EXPECT_EQ(memory.application->registrations(), 1U);
    EXPECT_THAT(logged(), ElementsAre("Get Permission For PushNotifications with granted = false"));
}

TEST_F(PushRegistrationTest, ALaunchIsReportedAfterActivationOnly) {
    EXPECT_DEATH(sdk->trackAppLaunch(), "trackAppLaunch");
    start();
    sdk->trackAppLaunch();
    settle();
    const auto requests = sent("/api/application");
    ASSERT_EQ(requests.size(), 1U);
    expectGolden("push-application", bodyOf(*requests[0]));

    sdk->setDebug(true);
    const testing::RequestMatch report{"POST", "", "/api/application"};
    for (const char* answer : {"{}", "[1]", "garbage", ""}) {
        memory.session->on(report, testing::ScriptedAnswer{200, answer}, 1);
        sdk->trackAppLaunch();
        settle();
        EXPECT_THAT(logged(), IsEmpty()) << answer;
    }
    memory.session->on(report, testing::ScriptedAnswer::failure(platform::URLErrorKind::cannotConnect), 1);
    sdk->trackAppLaunch();
    settle();
    EXPECT_THAT(logged(), ElementsAre("Error: scripted", ::testing::HasSubstr("is sent again in 60 s")));
}

} // namespace
} // namespace zentavo
