#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zentavo/foundation/Base64.h"
#include "zentavo/foundation/DateText.h"
#include "zentavo/foundation/DecimalInteger.h"
#include "zentavo/foundation/Hex.h"
#include "zentavo/foundation/UUID.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using zentavo::base64::Unknown;

Bytes bytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

TEST(Base64, KnownVectorsBothWays) {
    const std::pair<const char*, const char*> vectors[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {"\xfb\xff\xfe", "+//+"},
    };
    for (const auto& [plain, text] : vectors) {
        EXPECT_EQ(zentavo::base64::encode(bytesOf(plain)), text);
        EXPECT_EQ(zentavo::base64::decode(text), bytesOf(plain)) << text;
    }
    EXPECT_EQ(zentavo::base64::encodeURL(bytesOf("\xfb\xff\xfe\xff")), "-__-_w");
    EXPECT_EQ(zentavo::base64::decodeURL("-__-_w"), bytesOf("\xfb\xff\xfe\xff"));
    EXPECT_EQ(zentavo::base64::decodeURL("-__-_w=="), bytesOf("\xfb\xff\xfe\xff"));
}

TEST(Base64, RefusesWhatNoEncoderWrites) {
    // Short groups, padding missing, misplaced or too long, bits behind the last byte, a foreign alphabet.
    for (const char* text :
         {"Z", "Zg", "Zg=", "Zg===", "=", "====", "Z===", "Zg==Zg==", "Z=g=", "Zh==", "Zm9=", "Zm 9v", "-__-"}) {
        EXPECT_EQ(zentavo::base64::decode(text), std::nullopt) << text;
    }
    for (const char* text : {"+//+", "-", "-_=", "Zh", "Zg=", "Zm9v\n"}) {
        EXPECT_EQ(zentavo::base64::decodeURL(text), std::nullopt) << text;
    }
}

TEST(Base64, PassesOverUnknownCharactersWhenAsked) {
    for (const char* text : {"Zm9v\r\nYg==\n", "-Zm9vYg==-", "Zm9vYg", "Zm9vYg=\n="}) {
        EXPECT_EQ(zentavo::base64::decode(text, Unknown::ignore), bytesOf("foob")) << text;
    }
    for (const char* text : {"Zm9vY", "Zm9vYg=", "Zg==\nZg=="}) {
        EXPECT_EQ(zentavo::base64::decode(text, Unknown::ignore), std::nullopt) << text;
    }
}

TEST(Hex, BothWays) {
    EXPECT_EQ(zentavo::hex::encode(Bytes{0x00, 0x09, 0xAF, 0xFF}), "0009afff");
    EXPECT_EQ(zentavo::hex::decode("0009AfFf"), (Bytes{0x00, 0x09, 0xAF, 0xFF}));
    EXPECT_EQ(zentavo::hex::decode(""), Bytes{});
    for (const char* text : {"0", "0g", "g0", "0x00", "00 0", "-1"}) {
        EXPECT_EQ(zentavo::hex::decode(text), std::nullopt) << text;
    }
}

TEST(DecimalInteger, TakesASignAndDigitsAndNothingElse) {
    const std::pair<const char*, std::int64_t> integers[] = {
        {"0", 0}, {"42", 42}, {"+42", 42}, {"-42", -42}, {"007", 7}, {"-9223372036854775808", INT64_MIN}};
    for (const auto& [text, integer] : integers) {
        EXPECT_EQ(zentavo::decimalInteger(text), integer) << text;
    }
    for (const char* text : {"", "+", "-", "+-1", "-+1", "++1", " 1", "1 ", "1.0", "1e3", "0x10", "12a",
                             "9223372036854775808", "99999999999999999999", "\xD9\xA1"}) {
        EXPECT_EQ(zentavo::decimalInteger(text), std::nullopt) << text;
    }
}

TEST(UUID, TextAndVersion) {
    std::array<std::uint8_t, 16> ones{};
    ones.fill(0xFF);
    EXPECT_EQ(zentavo::uuid::text(ones), "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF");
    EXPECT_EQ(zentavo::uuid::text(zentavo::uuid::version4(ones)), "FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF");
    EXPECT_EQ(zentavo::uuid::text(zentavo::uuid::version4({})), "00000000-0000-4000-8000-000000000000");
}

TEST(DateText, LogTimestampPadsEveryField) {
    EXPECT_EQ(zentavo::logTimestamp({2026, 11, 5, 9, 3, 7}), "05.11.26 - 09:03:07");
    EXPECT_EQ(zentavo::logTimestamp({2000, 1, 31, 23, 59, 60}), "31.01.00 - 23:59:60");
}

} // namespace
