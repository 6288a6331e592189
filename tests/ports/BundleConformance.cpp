// What Bundle.h promises, held against every port.

#include <gmock/gmock.h>

#include "ports/memory/MemoryPlatform.h"
#include "tests/ports/Machine.h"
#include "zentavo/core/Zentavo.h"

namespace zentavo::tests {
namespace {

using ::testing::Optional;

class BundleConformance : public MachineTest {};

TEST_P(BundleConformance, TellsWhatTheInformationListSays) {
    const Map info = {{"CFBundleIdentifier", "com.example.shop"},
                      {"CFBundleVersion", "42"},
                      {"Flags", List{true, 7, Map{{"deep", "yes"}}}}};
    const auto bundles = machine->bundles(info);
    const auto main = bundles->main();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(main, bundles->main());
    EXPECT_THAT(main->identifier(), Optional(std::string("com.example.shop")));
    EXPECT_THAT(main->infoText("CFBundleVersion"), Optional(std::string("42")));
    EXPECT_THAT(main->info("Flags"), Optional(*info.find("Flags")));
    EXPECT_EQ(main->infoText("Flags"), std::nullopt) << "not text";
    EXPECT_EQ(main->info("CFBundleDisplayName"), std::nullopt);
    EXPECT_TRUE(main->path().starts_with('/'));
    EXPECT_FALSE(main->path().ends_with('/'));
}

TEST_P(BundleConformance, OpensBundlesByPath) {
    const auto bundles = machine->bundles({});
    EXPECT_EQ(bundles->main()->identifier(), std::nullopt);

    const std::string path = machine->addBundle({{"CFBundleIdentifier", 12}});
    const auto other = bundles->open(path + "/");
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(other->path(), path);
    EXPECT_EQ(other->identifier(), std::nullopt) << "not text";

    EXPECT_EQ(bundles->open(path + "/nothing"), nullptr);
    EXPECT_EQ(bundles->open(""), nullptr);
    EXPECT_EQ(bundles->open(path + std::string("\0", 1)), nullptr);
}

TEST_P(BundleConformance, AnExtensionFindsItsAppTwoLevelsUp) {
    const Map extension = {{"CFBundleIdentifier", "com.example.shop.push"}};
    const auto bundleId = [&](const Map& app) {
        testing::MemoryPlatform memory;
        memory.platform()->bundles = machine->bundlesOfExtension(app, extension);
        Zentavo::setShared(std::make_shared<Zentavo>(memory.platform()));
        const std::string found = Zentavo::getBundleId();
        Zentavo::setShared(nullptr);
        return found;
    };
    EXPECT_EQ(bundleId({{"CFBundleIdentifier", "com.example.shop"}}), "com.example.shop");

    const auto bundles = machine->bundlesOfExtension({{"CFBundleIdentifier", 12}}, extension);
    EXPECT_TRUE(bundles->main()->path().ends_with("/Shop.app/PlugIns/Push.appex")) << bundles->main()->path();
    EXPECT_THAT(bundles->main()->identifier(), Optional(std::string("com.example.shop.push")));
    EXPECT_EQ(bundleId({{"CFBundleIdentifier", 12}}), "com.example.shop.push") << "an app that does not say";
}

ZENTAVO_FOR_EACH_MACHINE(BundleConformance);

} // namespace
} // namespace zentavo::tests
