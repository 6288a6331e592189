#include "zentavo/core/Context.h"

#include "tests/support/SdkTest.h"

namespace zentavo {
namespace {

class ContextTest : public SdkTest {};

TEST_F(ContextTest, DescribesLibraryAppDeviceAndPlace) {
    memory.bundles->mainBundle()->set("CFBundleDisplayName", "Shop");
    memory.bundles->mainBundle()->set("CFBundleShortVersionString", "3.1");
    const Map context = Context(*memory.platform()).execute();
    const auto entry = [&](const char* map, const char* key) { return *context.find(map)->asMap()->find(key); };
    EXPECT_EQ(entry("library", "name"), "ZentavoSDK");
    EXPECT_EQ(entry("library", "version"), std::string(Zentavo::SDK_VERSION));
    EXPECT_EQ(entry("app", "name"), "Shop");
    EXPECT_EQ(entry("app", "version"), "3.1");
    EXPECT_EQ(entry("device", "manufacturer"), "Apple");
    EXPECT_EQ(entry("device", "id"), *memory.device->facts().identifierForVendor);
    EXPECT_EQ(entry("screen", "width"), 1280);
    EXPECT_EQ(*context.find("location"), Value(Map{{"lat", 0}, {"long", 0}, {"type", "Unknown"}}));
    for (const char* key : {"os", "locale", "timezone", "network", "userAgent", "instanceId"}) {
        EXPECT_TRUE(context.contains(key)) << key;
    }
}

TEST_F(ContextTest, TwoContextsDifferInTheirInstanceOnly) {
    const Context first(*memory.platform());
    const Context second(*memory.platform());
    EXPECT_EQ(first.execute(), first.execute());
    Map a = first.execute();
    Map b = second.execute();
    EXPECT_NE(a, b);
    a.remove("instanceId");
    b.remove("instanceId");
    EXPECT_EQ(a, b);
}

TEST_F(ContextTest, ADeviceWithoutIdentifierHasAnEmptyId) {
    auto facts = memory.device->facts();
    facts.identifierForVendor.reset();
    memory.device->set(facts);
    const Map context = Context(*memory.platform()).execute();
    EXPECT_EQ(*context.find("device")->asMap()->find("id"), "");
}

} // namespace
} // namespace zentavo
