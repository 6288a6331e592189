#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devserver/PushAddress.h"
#include "tests/devserver/PushReceiver.h"
#include "zentavo/foundation/Base64.h"
#include "zentavo/foundation/Hex.h"

namespace zentavo::devserver {
namespace {

using ::testing::HasSubstr;

webpush::Bytes bytes(std::string_view text) { return base64::decodeURL(text).value(); }
std::string token(const std::string& url) {
    return hex::encode({reinterpret_cast<const std::uint8_t*>(url.data()), url.size()});
}

/// RFC 8291, Appendix A.
const webpush::Receiver receiver{
    bytes("BCVxsr7N_eNgVRqvHtD0zTZsEc6-VV-JvLexhqUzORcxaOzi6-AYWXvTBHm4bjyPjs7Vd8pZGH6SRpkNtoIAiw4"),
    bytes("BTBZMqHH6r4Tts7J_aSIgg")};
const webpush::Sender sender{
    bytes("yfWPiYE-n46HLnH0KqZOF1fJJU3MYrct3AELtAQ-oRw"),
    bytes("BP4z9KsN6nGRTbVYI_c7VJSPQTBtkgcy27mlmlMoZIIgDll6e3vCYLocInmYWAmS6TlzAC8wEqKK6PBru3jl7A8"),
    bytes("DGv6ra1nlYgDCS1FRnbzlw")};

TEST(WebPushEncryption, WritesTheBytesOfTheStandardsExample) {
    const auto sealed = webpush::encrypt("When I grow up, I want to be a watermelon", receiver, sender);
    ASSERT_TRUE(sealed);
    EXPECT_EQ(
        base64::encodeURL({reinterpret_cast<const std::uint8_t*>(sealed->data()), sealed->size()}),
        "DGv6ra1nlYgDCS1FRnbzlwAAEABBBP4z9KsN6nGRTbVYI_c7VJSPQTBtkgcy27mlmlMoZIIgDll6e3vCYLocInmYWAmS6TlzAC8wEqKK6PBr"
        "u3jl7A_yl95bQpu6cVPTpK4Mqgkf1CXztLVBSt2Ks3oZwbuwXPXLWyouBWLVWGNWQexSgSxsj_Qulcy4a-fN");
}

TEST(WebPushEncryption, AReceiverReadsWhatItWasSent) {
    const PushReceiver device;
    std::string last;
    for (const std::size_t size : {0U, 1U, 15U, 16U, 3'993U}) {
        const std::string plain(size, 'x');
        const auto sealed = webpush::encrypt(plain, device.keys(), *webpush::Sender::random());
        ASSERT_TRUE(sealed);
        EXPECT_EQ(sealed->size(), size + webpush::overhead);
        EXPECT_EQ(device.open(*sealed), plain);
        EXPECT_NE(sealed->substr(0, 86), last.substr(0, 86)) << "salt and key are new for each message";
        last = *sealed;
    }
    last.back() = static_cast<char>(last.back() ^ 1);
    EXPECT_EQ(device.open(last), std::nullopt) << "the reader of this test does check";
}

TEST(WebPushEncryption, RefusesKeysThatAreNone) {
    webpush::Receiver other = receiver;
    other.publicKey.back() ^= 1U;
    EXPECT_THAT(webpush::encrypt("x", other, sender).error().message, HasSubstr("no point of P-256"));
    other = receiver;
    other.auth.pop_back();
    EXPECT_THAT(webpush::encrypt("x", other, sender).error().message, HasSubstr("15 bytes"));
    EXPECT_FALSE(webpush::encrypt(std::string(4'080, 'x'), receiver, sender));
}

TEST(PushAddress, IsReadFromTheToken) {
    const auto plain = PushAddress::ofToken(token("http://127.0.0.1:1/_push/a?b=c"));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->endpoint, "http://127.0.0.1:1/_push/a?b=c");
    EXPECT_FALSE(plain->receiver);

    const PushReceiver device;
    const auto secret = PushAddress::ofToken(token("http://127.0.0.1:1/_push/a" + device.fragment()));
    ASSERT_TRUE(secret);
    EXPECT_EQ(secret->endpoint, "http://127.0.0.1:1/_push/a");
    EXPECT_EQ(secret->receiver.value().publicKey, device.keys().publicKey);
    EXPECT_EQ(secret->receiver.value().auth, device.keys().auth);

    const std::string url = "http://127.0.0.1:1/_push/a#";
    const std::vector<std::pair<std::string, const char*>> wrong{
        {"0aff", "no URL"},
        {"zz", "no URL"},
        {"", "no URL"},
        {token("ftp://127.0.0.1/a"), "no URL"},
        {token(url), "no p256dh"},
        {token(url + "auth=BTBZMqHH6r4Tts7J_aSIgg"), "no p256dh"},
        {token(url + "p256dh=BTBZ&auth=BTBZMqHH6r4Tts7J_aSIgg"), "3 bytes; expected 65"},
        {token(url + device.fragment().substr(1, device.fragment().find('&') - 1) + "&auth=!"), "no base64url"},
    };
    for (const auto& [text, reason] : wrong) {
        const auto address = PushAddress::ofToken(text);
        ASSERT_FALSE(address) << text;
        EXPECT_THAT(address.error().message, HasSubstr(reason));
    }
}

} // namespace
} // namespace zentavo::devserver
