// A registration for pushes whose store is damaged or fails.

#include "ports/memory/FailNth.h"
#include "tests/desktop/UnifiedPushTest.h"

namespace zentavo::tests {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

using UnifiedPushStoreTest = UnifiedPushTest;

TEST_F(UnifiedPushStoreTest, DamagedStoresStartAnew) {
    const auto suite = memory.preferences->standard();
    const Map whole{{"token", "t"}, {"distributor", "d"}, {"version", 2}, {"keys", "k"}, {"endpoint", ""}};
    for (const char* key : {"token", "distributor", "version", "keys", "endpoint"}) {
        Map damaged = whole;
        damaged.set(key, List());
        suite->set("ZentavoPushRegistration", damaged);
        memory.systemLog->clear();
        FakeDistributor distributor(bus.address(), "Two", 2);
        Receiver receiver(bus, memory.platform());
        EXPECT_TRUE(receiver.toldNothing());
        EXPECT_THAT(logged(), HasSubstr("damaged"));
        EXPECT_NE(registered(distributor, receiver, 2), "t");
        EXPECT_THAT(receiver.told(), StartsWith("token "));
    }
}

/// Hands out one suite, whatever is asked for.
class OneSuite final : public platform::PreferencesProvider {
public:
    explicit OneSuite(std::shared_ptr<platform::Preferences> suite) : suite_(std::move(suite)) {}
    std::shared_ptr<platform::Preferences> standard() override { return suite_; }
    std::shared_ptr<platform::Preferences> suite(std::string_view) override { return suite_; }

private:
    const std::shared_ptr<platform::Preferences> suite_;
};

TEST_F(UnifiedPushStoreTest, WhereverTheStoreFailsTheAppGetsItsTokenAndThePush) {
    FakeDistributor distributor(bus.address(), "One", 1);
    bool reached = true;
    for (std::size_t n = 0; reached && n < 50; ++n) {
        testing::MemoryPlatform fresh{service};
        const auto counter = std::make_shared<testing::FailureCounter>(n);
        fresh.platform()->preferences = std::make_shared<OneSuite>(
            std::make_shared<testing::FailNthPreferences>(fresh.preferences->standard(), counter));
        Receiver receiver(bus, fresh.platform());
        const std::string token = registered(distributor, receiver, 1);
        EXPECT_EQ(receiver.told(), std::string("token ") + endpoint);
        EXPECT_EQ(distributor.message(1, service, token, "{}", "m1"), "");
        EXPECT_EQ(receiver.told(), "message {}");
        reached = counter->reached();
    }
    EXPECT_FALSE(reached);
}

} // namespace
} // namespace zentavo::tests
