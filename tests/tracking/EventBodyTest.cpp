#include "zentavo/tracking/EventBody.h"

#include <random>

#include "tests/support/Golden.h"
#include "tests/support/SdkTest.h"

namespace zentavo {
namespace {

class EventBodyTest : public SdkTest {
protected:
    EventBodyTest() { start(); }

    static const Map& part(const Map& body, const char* key) { return *body.find(key)->asMap(); }
    /// The body as it goes over the wire, read back.
    Map wire(const CDPEvent& event) {
        const std::string portal = "1001";
        const std::string props = "555";
        const EventBody body(*sdk->state(), sdk->state()->account(), event, portal, props);
        return json::readMap(body.text().value()).value();
    }
};

TEST_F(EventBodyTest, AnEventKnowsItsAccountWhenItIsMade) {
    CDPEvent event("e");
    EXPECT_EQ(event.portal_id, "1001");
    EXPECT_EQ(event.prop_id, "555");
    EXPECT_EQ(event.uid, sdk->getDeviceId());
    EXPECT_EQ(event.identifyType, "predict");
    EXPECT_EQ(event.clickBC, "");
    activate("2002");
    EXPECT_EQ(*event.bodyMap().find("portal_id"), "1001");
    event.setPropsId("777");
    EXPECT_EQ(*event.bodyMap().find("prop_id"), "777");
}

TEST_F(EventBodyTest, BeforeActivationThereIsNoBody) {
    restart();
    CDPEvent event("e");
    EXPECT_EQ(event.portal_id, "");
    EXPECT_EQ(event.uid, sdk->getDeviceId());
    EXPECT_TRUE(event.bodyMap().empty());
    activate();
    EXPECT_EQ(*wire(event).find("portal_id"), "1001") << "filled in where it had none";
}

TEST_F(EventBodyTest, HasTenEntriesInTheirOrder) {
    const CDPEvent event("view_product", {{{"sku", "A1"}, {"price", 9.5}}});
    std::vector<std::string> names;
    for (const auto& [key, value] : event.bodyMap()) {
        names.push_back(key);
    }
    EXPECT_THAT(names, ::testing::ElementsAre("dims", "extra", "context", "uid", "en", "items", "portal_id", "prop_id",
                                              "resp_type", "identify_type"));
    EXPECT_EQ(*event.bodyMap().find("context"), Value(sdk->context()));
}

TEST_F(EventBodyTest, DimensionsAndIdentifyTypeFollowTheCustomer) {
    CDPEvent event("e");
    event.identifyType = "own";
    EXPECT_TRUE(part(event.bodyMap(), "dims").empty());
    EXPECT_EQ(*event.bodyMap().find("identify_type"), "own");

    sdk->setCustomerProperties("c1", {});
    EXPECT_EQ(part(event.bodyMap(), "dims"), (Map{{"customers", Map{{"customer_id", "c1"}}}}));
    EXPECT_EQ(*event.bodyMap().find("identify_type"), "predict");

    event.setUserPropperties({{"age", 30}});
    event.setCustomerProperties({{"email", "a@b.example"}});
    EXPECT_EQ(part(event.bodyMap(), "dims"),
              (Map{{"users", Map{{"age", 30}}}, {"customers", Map{{"email", "a@b.example"}}}}));
    EXPECT_EQ(*event.bodyMap().find("identify_type"), "exact");
    EXPECT_EQ(*part(event.bodyMap(), "extra").find("identify_type"), "exact");
}

TEST_F(EventBodyTest, ExtraMergesTheHostsEntriesUnderTheSDKsOwn) {
    store()->set(keys().utm, Map{{"utm_source", "mail"}, {"list", "stored"}, {"_clk_bc", "stored"}});
    store()->set(keys().atm, "atm-text");
    store()->set(keys().clkBc, "click");
    store()->set(keys().sessionId, "s1");
    CDPEvent event("e", {}, {}, {}, {{"shared", "object"}, {"sku", "A1"}},
                   {{"list", "event"},
                    {"shared", "event"},
                    {"screen_name", "property"},
                    {"session_id", "host"},
                    {"visitor_type", "host"},
                    {"identify_type", "host"}},
                   "main", "Home page", "Home");
    const Map expected{{"utm_source", "mail"},  {"list", "event"},       {"shared", "object"},
                       {"sku", "A1"},           {"screen_name", "Home"}, {"screen_label", "Home page"},
                       {"atm", "atm-text"},     {"_clk_bc", "click"},    {"session_id", "s1"},
                       {"screen_type", "main"}, {"visitor_type", "new"}, {"identify_type", "predict"}};
    EXPECT_EQ(part(event.bodyMap(), "extra"), expected);
    sdk->setIsAssociatedUTM(false);
    EXPECT_FALSE(part(event.bodyMap(), "extra").contains("atm"));
}

TEST_F(EventBodyTest, TextAndMapSayTheSame) {
    // Random events, with every store entry there or not: two sinks, one description.
    std::mt19937 random(20261121);
    const auto chance = [&] { return random() % 2 == 0; };
    const std::vector<std::string> names{"utm", "screen_name", "session_id", "a", "b", "c", "screen_type"};
    const auto someMap = [&] {
        Map map;
        for (const std::string& name : names) {
            if (chance()) {
                map.set(name, chance() ? Value(static_cast<int>(random() % 100)) : Value("t\"\n" + name));
            }
        }
        return map;
    };
    for (int i = 0; i < 300; ++i) {
        for (const auto* key : {&keys().utm, &keys().atm, &keys().clkBc, &keys().sessionId, &keys().customerId}) {
            store()->set(*key, chance() ? Value(nullptr) : chance() ? Value("text") : Value(someMap()));
        }
        sdk->setIsAssociatedUTM(chance());
        CDPEvent event("e", {someMap(), someMap()}, someMap(), someMap(), someMap(), someMap(), chance() ? "t" : "",
                       chance() ? "l" : "", chance() ? "n" : "");
        ASSERT_EQ(wire(event), event.bodyMap()) << i;
        EXPECT_EQ(event.bodyMap().size(), 10U);
    }
}

TEST_F(EventBodyTest, ACustomerIdInAnEventBecomesTheStoredCustomer) {
    CDPEvent event("login");
    event.setCustomerProperties({{"customer_id", "c9"}, {"tier", "gold"}});
    EXPECT_EQ(sdk->getCustomerId(), "c9");
    EXPECT_EQ(event.customerProps.size(), 2U);
    EXPECT_EQ(sdk->getCustomerProperties(), Map());
    EXPECT_DEATH(event.setCustomerProperties({{"customer_id", 42}}), "customer_id");
}

TEST_F(EventBodyTest, EncodesUnderItsCodingKeys) {
    CDPEvent event("e", {{{"sku", "A1"}}}, {{"age", 30}});
    std::vector<std::string> names;
    for (const auto& [key, value] : event.encode()) {
        names.push_back(key);
    }
    EXPECT_THAT(names, ::testing::ElementsAre("portal_id", "prop_id", "en", "uid", "dims", "extra", "items",
                                              "resp_type", "userproperties", "customerproperties"));
    EXPECT_EQ(*event.encode().find("userproperties"), Value(Map{{"age", 30}}));
}

TEST_F(EventBodyTest, GoldenWireShapes) {
    // Everything that chance or the version fills in is pinned.
    Map context = sdk->context();
    context.set("instanceId", "00000000-0000-4000-8000-000000000000");
    context.find("library")->asMap()->set("version", "0");
    context.set("userAgent", "agent");
    sdk->setContext(context);

    CDPEvent product("view_product", {{{"sku", "A1"}, {"price", 9.5}, {"tags", List{"new", "ünï"}}}}, {}, {}, {},
                     {{"list", "home"}}, "main", "Home page", "Home");
    expectGolden("event-plain", wire(product));

    sdk->trackScreen("Home", "Home page", "main");
    expectGolden("event-screen", events().back());

    CDPEvent login("login");
    login.setCustomerProperties({{"customer_id", "c9"}, {"tier", "gold"}});
    store()->set(keys().utm, "mail");
    expectGolden("event-customer", wire(login));
}

} // namespace
} // namespace zentavo
