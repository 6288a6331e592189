// What the notification service is given, and what an app's programs tell each other: tables.

#include "ports/desktop/NotificationMessage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/desktop/BusNames.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/memory/MemoryBundles.h"

namespace zentavo::tests {
namespace {

using desktop::actionsOf;
using desktop::DesktopAction;
using platform::NotificationContent;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// The arguments as the bus's library prints them.
std::string printed(const NotificationContent& content, desktop::ServerCapabilities capabilities,
                    std::uint32_t presentation = 7) {
    const auto arguments = desktop::notifyArguments({"Sh\xFFop", "com.example.shop"}, content,
                                                    actionsOf(content, {}, false), capabilities, presentation, 42);
    char* text = g_variant_print(arguments.get(), FALSE);
    std::string result = text;
    g_free(text);
    return result;
}

TEST(NotificationMessageTest, SaysWhatThereIsAndHowItIsToBeShown) {
    NotificationContent content;
    content.title = "Sale & more";
    content.subtitle = "<b>Today</b>";
    content.body = "a < b & \"c\"";
    content.sound = "bell.wav";
    content.categoryIdentifier = "news";
    content.attachments = {{"one", "/tmp/a b/image.jpg"}, {"two", "/tmp/c.jpg"}};
    EXPECT_EQ(printed(content, {true, true}),
              "('Sh�op', 42, 'com.example.shop', 'Sale & more', "
              "'&lt;b&gt;Today&lt;/b&gt;\\na &lt; b &amp; &quot;c&quot;', ['default', 'Open'], "
              "{'desktop-entry': <'com.example.shop'>, 'urgency': <byte 0x01>, 'category': <'x-zentavo.news'>, "
              "'image-path': <'file:///tmp/a%20b/image.jpg'>, 'sound-name': <'bell'>}, -1)");
    EXPECT_THAT(printed(content, {false, false}, platform::presentAlert),
                AllOf(HasSubstr("'<b>Today</b>\\na < b & \"c\"', []"), HasSubstr("'suppress-sound': <true>"),
                      Not(HasSubstr("sound-name"))));
}

TEST(NotificationMessageTest, TextThatTheBusWouldNotCarryIsMadeToFit) {
    NotificationContent content;
    content.title = std::string("a\0b", 3);
    content.body = "\xC3\x28";
    content.sound = NotificationContent::defaultSound;
    content.categoryIdentifier = "\xFF";
    content.attachments = {{"one", "relative.jpg"}};
    content.userInfo = {{"aps", Map{{"actionButtons", Map{{"button1", Map{{"id", "x"}, {"label", "\xFF"}}}}}}}};
    EXPECT_THAT(printed(content, {true, true}), AllOf(HasSubstr("'a�b', '�('"), HasSubstr("'button1', '�'"),
                                                      HasSubstr("message-new-instant"), Not(HasSubstr("image-path"))));
}

TEST(NotificationActionsTest, ButtonsOfThePushThenOfItsCategory) {
    const auto button = [](Value id, Value label) { return Map{{"id", std::move(id)}, {"label", std::move(label)}}; };
    NotificationContent content;
    content.categoryIdentifier = "news";
    content.userInfo = {{"aps", Map{{"actionButtons", Map{{"button1", button("read", "Read")},
                                                          {"button2", button("later", "Later")},
                                                          {"button3", button("never", "Never")}}}}}};
    const std::vector<platform::NotificationCategory> categories{
        {"other", {{"no", "No"}}},
        {"news", {{"later", "Another later"}, {"mute", "Mute"}, {"", "Nothing"}, {"x", ""}}}};
    const DesktopAction open{"default", "Open", platform::defaultActionIdentifier};
    EXPECT_THAT(actionsOf(content, categories, true),
                ElementsAre(open, DesktopAction{"button1", "Read", "read"}, DesktopAction{"button2", "Later", "later"},
                            DesktopAction{"button3", "Mute", "mute"}));

    content.categoryIdentifier = desktop::richCategory;
    for (const Value& buttons :
         {Value(1), Value(List{1}), Value(Map{{"button1", "text"}, {"button2", button(1, "Read")}}),
          Value(Map{{"button1", button("read", nullptr)}, {"button2", button("", "Later")}})}) {
        content.userInfo = {{"aps", Map{{"actionButtons", buttons}}}};
        EXPECT_THAT(actionsOf(content, categories, false), ElementsAre(open)) << "whatever came over the net";
    }
    EXPECT_THAT(actionsOf(content, categories, true), ElementsAre(open, DesktopAction{"expand", "View", ""}));
}

TEST(NotificationCodecTest, ReadsWhatItWroteAndNothingElse) {
    platform::NotificationResponse response{{{"id", {}}}, "again", "token"};
    NotificationContent& content = response.notification.request.content;
    content.title = "T\"\n";
    content.badge = 0;
    content.userInfo = {{"aps", Map{{"pushId", "p"}, {"list", List{1, 2.5, nullptr}}}}};
    content.attachments = {{"image", "/tmp/x"}};
    const auto text = desktop::codec::write(response);
    ASSERT_TRUE(text);
    EXPECT_EQ(desktop::codec::readResponse(*text).value().response, response);
    EXPECT_FALSE(desktop::codec::readNotification(*text)) << "that is something else";

    response.notification.request.identifier = "";
    EXPECT_FALSE(desktop::codec::readResponse(desktop::codec::write(response).value()));
    content.title = std::string(desktop::codec::maximumBytes, 'x');
    EXPECT_FALSE(desktop::codec::write(response)) << "too large";
    content.title = "\xFF";
    EXPECT_FALSE(desktop::codec::write(response));
    for (const char* bad : {"", "[]", "{}", R"({"actionIdentifier": 1, "notification": {}})"}) {
        EXPECT_FALSE(desktop::codec::readResponse(bad)) << bad;
    }
}

TEST(BusNamesTest, ExtensionsAreNamedAfterTheirApp) {
    const auto names = [](const char* identifier) {
        return desktop::BusNames::of(*testing::MemoryBundles("/memory/Shop.app", identifier).main());
    };
    const desktop::BusNames shop{"example.shop", "example.shop.NotificationService",
                                 "example.shop.NotificationContent"};
    for (const char* identifier :
         {"example.shop", "example.shop.NotificationService", "example.shop.NotificationContent"}) {
        EXPECT_EQ(names(identifier), shop) << identifier;
    }
    for (const char* identifier :
         {"", "shop", "example..shop", "example.1shop", ":1.2", "example.sh\xC3\xB6p", ".NotificationService"}) {
        EXPECT_EQ(names(identifier), std::nullopt) << identifier;
    }
}

} // namespace
} // namespace zentavo::tests
