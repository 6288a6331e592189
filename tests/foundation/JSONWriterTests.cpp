#include <cmath>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/JSONWriter.h"

namespace {

using namespace zentavo;

/// Escapes one byte at a time: what the fast scan has to agree with.
std::string plainlyQuoted(std::string_view text) {
    const std::string_view shorts = "\"\\\b\f\n\r\t";
    std::string out = "\"";
    for (const char c : text) {
        if (const std::size_t at = shorts.find(c); at != std::string_view::npos) {
            out += '\\';
            out += "\"\\bfnrt"[at];
        } else if (c >= 0 && c < 0x20) {
            out += "\\u00";
            out += c < 0x10 ? '0' : '1';
            out += "0123456789abcdef"[c % 16];
        } else {
            out += c;
        }
    }
    return out + '"';
}

TEST(JSONWriter, EscapesEveryCharacterAtEveryPlace) {
    // Every ASCII character at every distance from both ends of texts that fill the scan's steps in all ways.
    for (std::size_t length = 1; length <= 36; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            for (int c = 0; c < 0x80; ++c) {
                std::string text(length, 'x');
                text[at] = static_cast<char>(c);
                ASSERT_EQ(*json::write(Value(text)), plainlyQuoted(text)) << length << ' ' << at << ' ' << c;
            }
        }
    }
    std::mt19937 random(3);
    const std::string_view pieces[] = {"\"",   "\\",   "\n", "é", "€", "😀", "plain text of some length",
                                       "\x1f", "\x7f", "/"};
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (unsigned i = random() % 12; i > 0; --i) {
            text += pieces[random() % std::size(pieces)];
        }
        const auto written = json::write(Value(text));
        ASSERT_EQ(*written, plainlyQuoted(text));
        ASSERT_EQ(*json::read(*written), Value(text));
    }
}

TEST(JSONWriter, TakesWellFormedUTF8Only) {
    for (const std::string_view text :
         {"\u0080", "\u07ff", "\u0800", "\ud7ff", "\ue000", "\uffff", "\U00010000", "\U0010ffff"}) {
        EXPECT_EQ(*json::write(Value(text)), '"' + std::string(text) + '"');
    }
    for (const std::string_view text : {"\x80", "\xbf", "\xc3", "\xc0\x80", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80",
                                        "\xe2\x82", "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80",
                                        "\xf0\x9f\x98", "\xff", "\xc3x", "\xe2\x82x", "\xf0\x9f\x98x"}) {
        EXPECT_FALSE(json::write(Value(text))) << plainlyQuoted(text);
        EXPECT_FALSE(json::write(Value("sixteen bytes on " + std::string(text) + " and some behind")));
        EXPECT_FALSE(json::write(Map{{std::string(text), 1}}));
    }
}

TEST(JSONWriter, StreamsWithoutATree) {
    JSONWriter writer("what a buffer held before");
    writer.beginMap();
    writer.key("a");
    writer.beginList();
    writer.value(1);
    writer.value(std::uint8_t{2});
    writer.value(std::string("t"));
    writer.value(true);
    writer.value(nullptr);
    writer.beginMap();
    writer.endMap();
    writer.value(List{});
    writer.endList();
    writer.key("b");
    writer.raw(R"({"ready":1})");
    writer.key("c\n");
    writer.value(2.5);
    writer.endMap();
    EXPECT_EQ(*writer.finish(), R"({"a":[1,2,"t",true,null,{},[]],"b":{"ready":1},"c\n":2.5})");
}

TEST(JSONWriter, NamesThePlaceOfTheFirstFailure) {
    const auto errorOf = [](const Value& value) {
        const auto text = json::write(value);
        return text ? "" : text.error().message;
    };
    const double nan = std::nan("");
    const std::string number = "JSON takes no number that is not finite";
    const std::string utf8 = "JSON takes no text that is not UTF-8";
    EXPECT_EQ(errorOf(nan), number);
    EXPECT_EQ(errorOf(List{1, HUGE_VAL}), "[1]: " + number);
    EXPECT_EQ(
        errorOf(Map{{"a", Map{{"x", List{1}}}}, {"items", List{Map{{"n", "]\"{,:"}, {"price", nan}, {"q", nan}}}}}),
        "items[0].price: " + number);
    EXPECT_EQ(errorOf(Map{{"a", List{List{}, List{1, 2, "\xff"}}}}), "a[1][2]: " + utf8);
    EXPECT_EQ(errorOf(Map{{"a", Map{{"ok", 1}, {"\xff", 2}}}}), "a: " + utf8);
    EXPECT_EQ(errorOf(Map{{"a", "long enough text \xc3"}}), "a: " + utf8);

    // What comes after the failure changes nothing.
    JSONWriter writer("]}]");
    writer.beginList();
    writer.value(nan);
    writer.value(1);
    writer.beginMap();
    writer.key("k");
    writer.value("v");
    writer.endMap();
    writer.endList();
    EXPECT_TRUE(writer.failed());
    EXPECT_EQ(writer.finish().error().message, "[0]: " + number);
}

TEST(JSONWriter, RefusesToGoTooDeep) {
    Value value = 1;
    for (int level = 0; level < 256; ++level) {
        value = List{value};
    }
    EXPECT_TRUE(json::write(value));
    const auto deeper = json::write(Value(Map{{"a", value}}));
    ASSERT_FALSE(deeper);
    EXPECT_NE(deeper.error().message.find("more than 256 levels"), std::string::npos);
}

} // namespace
