// Information lists that are damaged or built to hurt, and where bundles are found.

#include "ports/linux/PropertyList.h"

#include <array>

#include <gmock/gmock.h>
#include <pthread.h>

#include "ports/linux/PlistBundles.h"
#include "tests/ports/TemporaryFolder.h"

namespace zentavo::tests {
namespace {

using linux_port::PlistBundles;
using linux_port::readPropertyList;
using ::testing::Optional;

/// A binary list of the given objects, the first being the root, with references of one byte.
std::string binary(const std::vector<std::string>& objects) {
    std::string text = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        offsets += {static_cast<char>(text.size() >> 8U), static_cast<char>(text.size())};
        text += object;
    }
    const std::size_t table = text.size();
    text += offsets + std::string(6, '\0') + '\2' + '\1';
    for (const std::size_t number : {objects.size(), std::size_t(0), table}) {
        for (int shift = 56; shift >= 0; shift -= 8) {
            text += static_cast<char>(number >> static_cast<unsigned>(shift));
        }
    }
    return text;
}

TEST(PropertyListTest, ReadsXmlAndBinary) {
    EXPECT_THAT(readPropertyList("<plist version=\"1.0\"><dict><key>a &amp; b</key><array><integer>-5</integer>"
                                 "<real>0.5</real><true/></array><key>when</key><date>2024-01-01T00:00:00Z</date>"
                                 "<key>bytes</key><data>AAEC</data></dict></plist>"),
                Optional(Value(Map{{"a & b", List{-5, 0.5, true}}})));
    // {"k": ["v", 7, true]}
    EXPECT_THAT(readPropertyList(binary({"\xD1\1\2", "\x51k", "\xA3\3\4\5", "\x51v", "\x10\7", "\x09"})),
                Optional(Value(Map{{"k", List{"v", 7, true}}})));
}

TEST(PropertyListTest, HostileListsAreNoLists) {
    // A list in itself; two that hold each other.
    EXPECT_EQ(readPropertyList(binary({"\xA1" + std::string(1, '\0')})), std::nullopt);
    EXPECT_EQ(readPropertyList(binary({"\xA1\1", "\xA1" + std::string(1, '\0')})), std::nullopt);
    // Each list holds the next one eight times: 8^40 nodes when every one is copied.
    std::vector<std::string> laughs;
    for (char i = 0; i < 40; ++i) {
        laughs.push_back("\xA8" + std::string(8, static_cast<char>(i + 1)));
    }
    laughs.push_back("\x09");
    EXPECT_EQ(readPropertyList(binary(laughs)), std::nullopt);
    // Deeper than any stack likes.
    std::vector<std::string> deep;
    for (int i = 1; i < 200; ++i) {
        deep.push_back("\xA1" + std::string(1, static_cast<char>(i)));
    }
    deep.push_back("\x09");
    EXPECT_EQ(readPropertyList(binary(deep)), std::nullopt);
    // Counts that lie.
    EXPECT_EQ(readPropertyList(binary({"\xAF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"})), std::nullopt);
    EXPECT_EQ(readPropertyList(binary({"\xAF\x12\x00\xFF\xFF\xFF"})), std::nullopt);
    EXPECT_EQ(readPropertyList("bplist00" + std::string(32, '\xFF')), std::nullopt);
    EXPECT_EQ(readPropertyList("bplist00"), std::nullopt);
    EXPECT_EQ(readPropertyList(""), std::nullopt);
    EXPECT_EQ(readPropertyList("<plist><dict><key>a"), std::nullopt);
}

TEST(PropertyListTest, NestingFitsASmallThreadsStack) {
    std::string text = "<plist>";
    for (int i = 0; i < 65'000; ++i) {
        text += "<array>";
    }
    for (int i = 0; i < 65'000; ++i) {
        text += "</array>";
    }
    text += "</plist>";
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstacksize(&attributes, 512U << 10U);
    pthread_t thread{};
    const auto read = [](void* list) -> void* {
        EXPECT_EQ(readPropertyList(*static_cast<std::string*>(list)), std::nullopt);
        return nullptr;
    };
    ASSERT_EQ(::pthread_create(&thread, &attributes, read, &text), 0);
    ::pthread_join(thread, nullptr);
    ::pthread_attr_destroy(&attributes);
}

TEST(PropertyListTest, EveryDamagedByteIsSurvived) {
    const std::string whole = binary({"\xD2\1\3\2\4", "\x51k", "\xA2\3\4", "\x51v", "\x10\7"});
    ASSERT_NE(readPropertyList(whole), std::nullopt);
    for (std::size_t i = 8; i < whole.size(); ++i) {
        for (const unsigned flip : {0x01U, 0x0FU, 0x10U, 0x80U, 0xFFU}) {
            std::string damaged = whole;
            damaged[i] = static_cast<char>(static_cast<unsigned char>(damaged[i]) ^ flip);
            static_cast<void>(readPropertyList(damaged));
        }
        static_cast<void>(readPropertyList(whole.substr(0, i)));
    }
}

TEST(PlistBundlesTest, AProgramBelongsToTheInnermostBundle) {
    const std::array<std::array<const char*, 2>, 6> cases = {{
        {"/opt/Shop.app/shop", "/opt/Shop.app"},
        {"/opt/Shop.app/bin/shop", "/opt/Shop.app"},
        {"/opt/Shop.app/Contents/Linux/shop", "/opt/Shop.app"},
        {"/opt/Shop.app/PlugIns/Push.appex/push", "/opt/Shop.app/PlugIns/Push.appex"},
        {"/opt/Shop.app/a/b/c/shop", "/opt/Shop.app/a/b/c"},
        {"/usr/bin/shop", "/usr/bin"},
    }};
    for (const auto& [program, bundle] : cases) {
        EXPECT_EQ(PlistBundles::bundleOf(program), bundle);
    }
    // This test's own program.
    PlistBundles bundles;
    EXPECT_TRUE(std::filesystem::is_directory(bundles.main()->path()));
    EXPECT_EQ(bundles.main()->identifier(), std::nullopt);
}

TEST(PlistBundlesTest, UnreadableInformationIsNone) {
    const TemporaryFolder folder;
    const std::string good = "<plist><dict><key>CFBundleIdentifier</key><string>a.b</string></dict></plist>";
    folder.write("Good.app/Contents/Info.plist", good);
    folder.write("Long.app/Info.plist", good + std::string(1U << 20U, ' '));
    folder.write("List.app/Info.plist", "<plist><array/></plist>");
    std::filesystem::create_directories(folder.path() / "Folder.app/Info.plist");
    PlistBundles bundles(folder.path() / "Good.app/");
    EXPECT_THAT(bundles.main()->identifier(), Optional(std::string("a.b")));
    EXPECT_EQ(bundles.main()->path(), folder.path() / "Good.app");
    for (const char* name : {"Long.app", "List.app", "Folder.app"}) {
        const auto bundle = bundles.open((folder.path() / name).string());
        ASSERT_NE(bundle, nullptr) << name;
        EXPECT_EQ(bundle->identifier(), std::nullopt) << name;
    }
}

} // namespace
} // namespace zentavo::tests
