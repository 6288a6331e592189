#include <bit>
#include <cmath>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "zentavo/foundation/JSON.h"

namespace {

using namespace zentavo;

std::string repeated(std::string_view text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

TEST(JSON, ReadsEveryKindAndKeepsTheOrder) {
    const auto value =
        json::read(R"( {"z":[1,-2.5,1e2,12.0,true,false,null,"\u00e9\ud83d\ude00\/\n"],"a":{},"m":[]} )");
    ASSERT_TRUE(value) << value.error().message;
    const Map expected{{"z", List{1, -2.5, 100.0, 12.0, true, false, nullptr, "é😀/\n"}}, {"a", Map{}}, {"m", List{}}};
    EXPECT_EQ(*value, Value(expected));
    const auto text = json::write(*value);
    ASSERT_TRUE(text);
    EXPECT_EQ(*text, R"({"z":[1,-2.5,100.0,12.0,true,false,null,"é😀/\n"],"a":{},"m":[]})");
}

TEST(JSON, KeepsIntegersAndDoublesApart) {
    const auto list =
        json::read("[9223372036854775807,-9223372036854775808,9223372036854775808,18446744073709551615,-0.0,1.0]");
    ASSERT_TRUE(list);
    const List& numbers = *list->asList();
    EXPECT_NE(numbers[0].asInteger(), nullptr);
    EXPECT_NE(numbers[1].asInteger(), nullptr);
    EXPECT_EQ(*numbers[2].asDouble(), 0x1p63);
    EXPECT_EQ(*numbers[3].asDouble(), 0x1p64);
    EXPECT_TRUE(std::signbit(*numbers[4].asDouble()));
    EXPECT_NE(numbers[5].asDouble(), nullptr);
    EXPECT_EQ(*json::write(*list),
              "[9223372036854775807,-9223372036854775808,9223372036854775808.0,18446744073709551616.0,-0.0,1.0]");
}

TEST(JSON, DoublesComeBackBitForBit) {
    std::mt19937_64 random(7);
    List numbers{0x1p-1074, 0x1.fffffffffffffp1023, 0.1, 1e21, 1e22, 123456789012345680000.0, 5e-324};
    while (numbers.size() < 20000) {
        // All exponents, and numbers of everyday size.
        const double any = std::bit_cast<double>(random());
        numbers.emplace_back(std::isfinite(any) ? any : 0.5);
        numbers.emplace_back(static_cast<double>(random() % 100000000) / 100.0);
    }
    const auto text = json::write(Value(numbers));
    ASSERT_TRUE(text);
    const auto again = json::read(*text);
    ASSERT_TRUE(again) << again.error().message;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const double* read = (*again->asList())[i].asDouble();
        ASSERT_NE(read, nullptr) << *numbers[i].asDouble();
        ASSERT_EQ(std::bit_cast<std::uint64_t>(*read), std::bit_cast<std::uint64_t>(*numbers[i].asDouble()));
    }
}

TEST(JSON, RefusesWhatIsNoJSON) {
    const std::string_view cases[] = {
        "",
        " ",
        "{",
        "[1,]",
        "{\"a\":1,}",
        "{\"a\" 1}",
        "{a:1}",
        "[1] 2",
        "nul",
        "'a'",
        "\"a",
        "\"\t\"",
        "\"\\x\"",
        "01",
        "1.",
        "+1",
        ".5",
        "NaN",
        "Infinity",
        "1e400",
        "-1e400",
        "18446744073709551616",
        "-9223372036854775809",
        "\"\xff\"",
        "\"\xed\xa0\x80\"",
        "\"\xc0\xaf\"",
        "\"\\ud800\"",
        "[1}",
        std::string_view("1\0", 2),
        "//c\n1",
    };
    for (const std::string_view text : cases) {
        const auto value = json::read(text);
        ASSERT_FALSE(value) << text;
        EXPECT_FALSE(value.error().message.empty());
    }
}

TEST(JSON, TheLastOfEqualNamesWinsInThePlaceOfTheFirst) {
    const auto map = json::readMap(R"({"a":1,"b":2,"a":{"c":3}})");
    ASSERT_TRUE(map);
    EXPECT_EQ(*json::write(*map), R"({"a":{"c":3},"b":2})");
}

TEST(JSON, KeepsToTheLimits) {
    EXPECT_TRUE(json::read(repeated("[", 256) + repeated("]", 256)));
    const auto deep = json::read(repeated("{\"a\":", 257) + "1" + repeated("}", 257));
    ASSERT_FALSE(deep);
    EXPECT_NE(deep.error().message.find("256 levels"), std::string::npos);
    EXPECT_TRUE(json::read("[[],[[]]]", {100, 3}));
    EXPECT_FALSE(json::read("[[],[[]]]", {100, 2}));
    EXPECT_TRUE(json::read("1", {100, 0}));
    // However much a caller allows, a hostile text does not reach the end of the stack.
    EXPECT_FALSE(json::read(repeated("[", 200000), {1U << 20U, 1U << 20U}));
    EXPECT_FALSE(json::read(repeated("[", 1001) + repeated("]", 1001), {1U << 20U, 1U << 20U}));

    EXPECT_TRUE(json::read("[12]", {4, 9}));
    EXPECT_FALSE(json::read("[123]", {4, 9}));

    EXPECT_TRUE(json::read(R"([1,{"a":2}])", {100, 9, 4}));
    for (const char* text : {R"([1,{"a":2}])", "[1,2,3,4]", "[[[[]]]]", R"({"a":1,"a":2,"a":3})"}) {
        const auto many = json::read(text, {100, 9, 3});
        ASSERT_FALSE(many) << text;
        EXPECT_EQ(many.error().message, "JSON of more than 3 values") << text;
    }
    EXPECT_FALSE(json::read("1", {100, 9, 0}));
    // Text that would be a hundred times as long as a tree.
    const auto hostile = json::read("[" + repeated("[],", 2'000'000) + "0]");
    ASSERT_FALSE(hostile);
    EXPECT_EQ(hostile.error().message, "JSON of more than 1000000 values");
}

TEST(JSON, EmptyTextIsRefusedAlsoWithoutAPointer) { EXPECT_FALSE(json::read(std::string_view())); }

TEST(JSON, ReadMapTakesNothingButAnObject) {
    EXPECT_TRUE(json::readMap("{}"));
    EXPECT_EQ(json::readMap("[]").error().message, "expected a JSON object, found a list");
    EXPECT_FALSE(json::readMap("{").ok());
}

/// Notes what it takes, and reads JSON meanwhile.
class NotingTaker : public json::ListTaker {
public:
    void begin(std::string_view outer, std::string_view inner, std::size_t size) override {
        taken += std::string(outer) + '.' + std::string(inner) + ' ' + std::to_string(size) + ':';
    }
    void take(Value element) override {
        EXPECT_TRUE(json::read(R"(["something","else"])"));
        taken += *json::write(element) + ';';
    }
    std::string taken;
};

TEST(JSON, ListsTwoLevelsDownAreHandedOverAndCountAgainstTheLimits) {
    const std::string text = R"({"a":[1],"b":{"c":[{"d":[2]},"x"],"e":3,"f":[],"g":{"h":[4]}},"i":{}})";
    NotingTaker taker;
    const auto rest = json::read(text, taker);
    ASSERT_TRUE(rest);
    EXPECT_EQ(*json::write(*rest), R"({"a":[1],"b":{"c":[],"e":3,"f":[],"g":{"h":[4]}},"i":{}})");
    EXPECT_EQ(taker.taken, R"(b.c 2:{"d":[2]};"x";b.f 0:)");

    constexpr std::size_t values = 15; // with the outermost
    constexpr std::size_t levels = 5;
    for (const auto& limits : {json::Limits{.maximumDepth = levels, .maximumValues = values},
                               json::Limits{.maximumDepth = levels - 1, .maximumValues = values},
                               json::Limits{.maximumDepth = levels, .maximumValues = values - 1}}) {
        NotingTaker other;
        EXPECT_EQ(json::read(text, other, limits).ok(), json::readMap(text, limits).ok()) << limits.maximumDepth;
    }
    EXPECT_TRUE(json::read(text, taker, {.maximumDepth = levels, .maximumValues = values}));
    EXPECT_FALSE(json::read(text, taker, {.maximumDepth = levels - 1}));
    EXPECT_FALSE(json::read(text, taker, {.maximumValues = values - 1}));
    EXPECT_EQ(json::read("[7]", taker).value(), Value(List{7}));
}

TEST(JSON, ThreadsAndLargeTextsDoNotDisturbEachOther) {
    // Beyond the size that goes through the parser kept by the thread, and back.
    const std::string large = "[" + repeated("\"0123456789\",", 20000) + "1]";
    const auto read = [&] {
        for (int i = 0; i < 3; ++i) {
            const auto small = json::read(R"({"a":[1,2,"x"]})");
            const auto big = json::read(large);
            ASSERT_TRUE(small && big);
            EXPECT_EQ(*json::write(*small), R"({"a":[1,2,"x"]})");
            EXPECT_EQ(*json::write(*big), large);
        }
    };
    std::thread other(read);
    read();
    other.join();
}

} // namespace
