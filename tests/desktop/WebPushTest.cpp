// Encrypted pushes: what was sent is read, and whatever is wrong with one is named.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/desktop/WebPushDecryption.h"
#include "ports/memory/SeededRandom.h"
#include "tests/desktop/WebPushSender.h"

namespace zentavo::tests {
namespace {

using desktop::WebPushKeys;
using desktop::web_push::decrypt;
using ::testing::HasSubstr;

constexpr const char* rfcKeys = "q1dXpw3UpT5VOmu_cf_v6ih07Aems3njxI-JWgLcM94.BTBZMqHH6r4Tts7J_aSIgg";
constexpr const char* rfcText = "When I grow up, I want to be a watermelon";
constexpr const char* rfcMessage =
    "DGv6ra1nlYgDCS1FRnbzlwAAEABBBP4z9KsN6nGRTbVYI_c7VJSPQTBtkgcy27mlmlMoZIIgDll6e3vCYLocInmYWAmS6TlzAC8wEqKK6PBru3jl"
    "7A_yl95bQpu6cVPTpK4Mqgkf1CXztLVBSt2Ks3oZwbuwXPXLWyouBWLVWGNWQexSgSxsj_Qulcy4a-fN";

class WebPushTest : public ::testing::Test {
protected:
    std::string outcome(const std::string& message) const {
        const auto text = decrypt(keys, message);
        return text ? "text: " + *text : text.error().message;
    }
    std::string changed(std::size_t at) const {
        std::string message = good;
        message[at] = static_cast<char>(message[at] ^ 1);
        return message;
    }

    const WebPushKeys keys = WebPushKeys::read(rfcKeys).value();
    const WebPushSender sender{};
    const std::string good = sender.encrypt(keys, rfcText);
};

TEST_F(WebPushTest, TheExampleOfTheStandard) {
    EXPECT_EQ(keys.publicKeyText(),
              "BCVxsr7N_eNgVRqvHtD0zTZsEc6-VV-JvLexhqUzORcxaOzi6-AYWXvTBHm4bjyPjs7Vd8pZGH6SRpkNtoIAiw4");
    EXPECT_EQ(keys.text(), rfcKeys);
    EXPECT_EQ(outcome(WebPushSender::bytes(rfcMessage)), std::string("text: ") + rfcText);
    EXPECT_EQ(good, WebPushSender::bytes(rfcMessage));
}

TEST_F(WebPushTest, KeysAreNewEachTimeAndReadBack) {
    testing::SeededRandom random(1);
    const WebPushKeys one = WebPushKeys::make(random);
    const WebPushKeys other = WebPushKeys::make(random);
    EXPECT_NE(one.text(), other.text());
    EXPECT_EQ(decrypt(WebPushKeys::read(one.text()).value(), sender.encrypt(one, "hello")).value(), "hello");
    EXPECT_FALSE(decrypt(other, sender.encrypt(one, "hello")));

    const std::string auth(22, 'A');
    for (const std::string& damaged : {std::string(), std::string("."), std::string(rfcKeys).substr(1),
                                       std::string(rfcKeys) + "AA", std::string(43, 'A') + "." + auth, // zero
                                       "_" + std::string(42, '_') + "." + auth, // beyond the curve's order
                                       "?" + std::string(rfcKeys).substr(1)}) {
        EXPECT_FALSE(WebPushKeys::read(damaged)) << damaged;
    }
}

TEST_F(WebPushTest, TextsOfAnyLengthAndPaddingAreRead) {
    const std::string binary("\0\x01\x02\0", 4);
    for (const std::string& text : {std::string(), std::string("x"), binary, std::string(3'993, 'x')}) {
        EXPECT_EQ(outcome(sender.encrypt(keys, text)), "text: " + text);
    }
    WebPushSender padding;
    padding.ending = std::string("\x02\0\0\0", 4);
    EXPECT_EQ(outcome(padding.encrypt(keys, binary)), "text: " + binary);
    // The record fills its size, or would go on.
    const auto exact = static_cast<std::uint32_t>(std::string(rfcText).size() + 17);
    EXPECT_EQ(outcome(WebPushSender{exact, "\x02", "", ""}.encrypt(keys, rfcText)), std::string("text: ") + rfcText);
    EXPECT_EQ(outcome(WebPushSender{exact - 1, "\x02", "", ""}.encrypt(keys, rfcText)),
              "the message has more than one record");
}

TEST_F(WebPushTest, WhatIsWrongIsNamed) {
    WebPushSender noEnd;
    noEnd.ending = std::string(3, '\0');
    WebPushSender notLast;
    notLast.ending = "\x01";
    WebPushSender otherAuth;
    otherAuth.auth = std::string(16, 'x');
    std::string shortKey = good;
    shortKey[20] = 33;
    std::string compressed = good;
    compressed[21] = 6; // a form of the same length that says the point twice
    const std::string wrong = "the message was not encrypted for this registration, or has been changed";
    const struct {
        std::string message;
        std::string why;
    } cases[] = {
        {"", "cut off in its head"},
        {good.substr(0, 85), "cut off in its head"},
        {good.substr(0, 86), "cut off in its record"},
        {good.substr(0, 86 + 16), "cut off in its record"},
        {good.substr(0, good.size() - 1), wrong},
        {good + "x", wrong},
        {std::string(5'000, 'x'), "too long: 5000 bytes"},
        {WebPushSender{17, "\x02", "", ""}.encrypt(keys, ""), "record size is too small: 17"},
        {shortKey, "key has 33 bytes, and not 65"},
        {compressed, "no point of the curve"},
        {changed(22), "no point of the curve"},
        {noEnd.encrypt(keys, ""), "no proper end"},
        {notLast.encrypt(keys, "text"), "no proper end"},
        {otherAuth.encrypt(keys, "text"), wrong},
    };
    for (const auto& each : cases) {
        EXPECT_THAT(outcome(each.message), HasSubstr(each.why));
    }
    // Every byte counts: salt, record, tag. A record size that is large enough says nothing.
    for (std::size_t at = 0; at < good.size(); ++at) {
        const bool recordSize = at >= 16 && at < 20;
        EXPECT_EQ(decrypt(keys, changed(at)).ok(), recordSize) << at;
    }
}

} // namespace
} // namespace zentavo::tests
