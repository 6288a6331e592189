// What a push says, read as a phone's system would.

#include "ports/desktop/PushMessage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "zentavo/foundation/JSON.h"

namespace zentavo::tests {
namespace {

using desktop::PushMessage;

PushMessage read(const std::string& aps) { return PushMessage::read("{\"aps\":" + aps + "}").value(); }

TEST(PushMessageTest, AllThatThereIsToSay) {
    const std::string body =
        R"({"aps":{"alert":{"title":"T","subtitle":"S","body":"B"},"category":"c","sound":"bell.wav","badge":3,)"
        R"("mutable-content":1,"pushId":"p1"},"more":[1,2]})";
    const PushMessage message = PushMessage::read(body).value();
    platform::NotificationContent expected;
    expected.title = "T";
    expected.subtitle = "S";
    expected.body = "B";
    expected.categoryIdentifier = "c";
    expected.sound = "bell.wav";
    expected.badge = 3;
    expected.userInfo = json::readMap(body).value();
    EXPECT_EQ(message.content, expected);
    EXPECT_TRUE(message.alert);
    EXPECT_TRUE(message.mutableContent);
}

TEST(PushMessageTest, WhatIsAbsentOrOfTheWrongKindSaysNothing) {
    EXPECT_EQ(read(R"({"alert":"B"})").content.body, "B");
    EXPECT_EQ(read(R"({"alert":"B"})").content.sound, std::nullopt);
    EXPECT_FALSE(read(R"({"alert":"B"})").mutableContent);
    const PushMessage odd = read(R"({"alert":{"title":1,"body":"B"},"category":true,"sound":7,"badge":"3",)"
                                 R"("mutable-content":"1"})");
    EXPECT_EQ(odd.content.title, "");
    EXPECT_EQ(odd.content.categoryIdentifier, "");
    EXPECT_EQ(odd.content.sound, std::nullopt);
    EXPECT_EQ(odd.content.badge, std::nullopt);
    EXPECT_FALSE(odd.mutableContent);
    EXPECT_TRUE(odd.alert);

    // The number by a rule of the sender's is the extension's business.
    EXPECT_EQ(read(R"({"alert":"B","badge":{"type":"increase","value":1}})").content.badge, std::nullopt);
    EXPECT_EQ(read(R"({"alert":"B","badge":0})").content.badge, 0);
    EXPECT_EQ(read(R"({"alert":"B","badge":-1})").content.badge, std::nullopt);
    EXPECT_EQ(read(R"({"alert":"B","sound":{"name":"bell.wav","volume":1}})").content.sound, "bell.wav");
    EXPECT_EQ(read(R"({"alert":"B","sound":""})").content.sound, std::nullopt);
}

TEST(PushMessageTest, WithoutATextItIsSilent) {
    for (const char* aps : {R"({"content-available":1})", R"({"badge":2,"sound":"bell.wav"})", R"({"alert":""})",
                            R"({"alert":{}})", R"({"alert":7})", "[]", "null"}) {
        EXPECT_FALSE(read(aps).alert) << aps;
    }
    EXPECT_FALSE(PushMessage::read(R"({"alert":"at the wrong place"})")->alert);
    EXPECT_TRUE(read(R"({"alert":"B","content-available":1})").alert);
}

TEST(PushMessageTest, WhatIsNoObjectIsRefused) {
    const std::string deep = "{\"aps\":" + std::string(40, '[') + std::string(40, ']') + "}";
    for (const std::string& body :
         {std::string(), std::string("hello"), std::string("[]"), std::string("{\"a\":1"),
          std::string("{\"a\":\"\xff\"}"), deep, "{\"a\":\"" + std::string(4'096, 'x') + "\"}"}) {
        EXPECT_FALSE(PushMessage::read(body)) << body.substr(0, 50);
    }
}

} // namespace
} // namespace zentavo::tests
