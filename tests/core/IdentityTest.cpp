#include "tests/support/SdkTest.h"

namespace zentavo {
namespace {

class IdentityTest : public SdkTest {
protected:
    /// What memory keeps of the customer, beside the store.
    std::optional<std::string> customerInMemory() const {
        MutexLock lock(sdk->state()->mutex);
        return sdk->state()->customerId;
    }
};

TEST_F(IdentityTest, BeforeActivationSettersDoNothingAndGettersFallBack) {
    sdk->setUid("u1");
    sdk->resetUid();
    sdk->resetCustomer();
    EXPECT_EQ(sdk->getUid(), sdk->getDeviceId());
    EXPECT_EQ(sdk->getCustomerId(), "");
    EXPECT_EQ(sdk->getPushUid(), std::nullopt);
    EXPECT_EQ(sdk->getPortalId(), "");
    EXPECT_EQ(sdk->getPropsId(), "");
    EXPECT_EQ(sdk->getAppGroupId(), "");
    EXPECT_EQ(sdk->getCustomerProperties(), Map());
    EXPECT_EQ(UserDefaultsManager::userDefaults(), nullptr);
}

TEST_F(IdentityTest, TheVisitorIsTheHostsElseTheDevice) {
    start();
    sdk->setUid("u1");
    EXPECT_EQ(sdk->getUid(), "u1");
    EXPECT_EQ(memory.preferences->synchroniseCount(), 2); // activation and setUid
    restart();
    activate();
    EXPECT_EQ(sdk->getUid(), "u1");
    sdk->resetUid();
    EXPECT_EQ(sdk->getUid(), sdk->getDeviceId());

    auto facts = memory.device->facts();
    facts.identifierForVendor.reset();
    memory.device->set(facts);
    EXPECT_EQ(sdk->getUid(), "");
}

TEST_F(IdentityTest, CustomerPropertiesAreKeptInMemoryAndTheIdInTheStore) {
    start();
    const int flushed = memory.preferences->synchroniseCount();
    sdk->setCustomerProperties("c1", {});
    EXPECT_EQ(sdk->getCustomerId(), "c1");
    EXPECT_EQ(store()->object(keys().customerProperties), std::nullopt);
    sdk->setCustomerProperties("c2", {{"tier", "gold"}});
    EXPECT_EQ(store()->string(keys().customerProperties), "c2"); // the id, as installed apps have it
    EXPECT_EQ(sdk->getCustomerProperties(), (Map{{"tier", "gold"}}));
    sdk->setCustomerProperties("c3", {});
    EXPECT_EQ(sdk->getCustomerProperties(), (Map{{"tier", "gold"}}));
    EXPECT_EQ(memory.preferences->synchroniseCount(), flushed);

    sdk->resetCustomer();
    EXPECT_EQ(sdk->getCustomerId(), "");
    EXPECT_EQ(store()->object(keys().customerProperties), std::nullopt);
    EXPECT_EQ(customerInMemory(), "c3"); // memory keeps it
    EXPECT_EQ(sdk->getCustomerProperties(), (Map{{"tier", "gold"}}));
}

TEST_F(IdentityTest, AnActivationLoadsAStoredCustomerWhereItIsText) {
    start();
    sdk->setCustomerProperties("c1", {});
    restart();
    activate();
    EXPECT_EQ(customerInMemory(), "c1");
    store()->set(keys().customerId, 42);
    restart();
    activate();
    EXPECT_EQ(customerInMemory(), std::nullopt);
}

TEST_F(IdentityTest, KeyNamesAreThoseOfInstalledApps) {
    const StoreKeys bare(std::nullopt);
    EXPECT_EQ(bare.visitorId, "default.ZentavoVisitorId");
    EXPECT_EQ(bare.badge, "ZentavoSDK.badge");
    const StoreKeys& app = keys(); // of com.example.host, as the accessors are
    const std::vector<std::pair<std::string, std::string>> names{
        {app.visitorId, "ZentavoVisitorId"},
        {app.customerId, "ZentavoCustomerId"},
        {app.customerProperties, "ZentavoCustomerProperties"},
        {app.visitorType, "visitorType"},
        {app.sessionId, "sessionId"},
        {app.utm, "utm"},
        {app.atm, "atm"},
        {app.clkBc, "clkBc"},
        {app.portalId, "ZenatvoPortalKey"},
        {app.propsId, "ZenatvoPropsKey"},
        {app.pushUid, "ZentavoUid"},
        {app.deviceToken, "ZenatvoDeviceTokenFlag"},
        {app.appInstall, "app_install"},
        {app.operationTime, "operationTime"},
        {app.applicationId, "applicationId"},
        {app.badge, "badge"},
        {Zentavo::VisitorIdKey(), "ZentavoVisitorId"},
        {Zentavo::CustomerIdKey(), "ZentavoCustomerId"},
        {Zentavo::CustomerProperties(), "ZentavoCustomerProperties"},
        {Zentavo::visitorType(), "visitorType"},
        {Zentavo::sessionIdKey(), "sessionId"},
        {Zentavo::utmKey(), "utm"},
        {Zentavo::atmKey(), "atm"},
        {Zentavo::clkBc(), "clkBc"},
        {Zentavo::zentavoKeyBadge(), "badge"},
    };
    for (const auto& [name, suffix] : names) {
        EXPECT_EQ(name, "com.example.host." + suffix);
    }
}

} // namespace
} // namespace zentavo
