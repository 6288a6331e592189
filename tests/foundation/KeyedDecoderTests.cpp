#include <gtest/gtest.h>

#include "zentavo/foundation/KeyedDecoder.h"

namespace {

using namespace zentavo;

std::string failureOf(const KeyedDecoder& decoder) { return decoder.failure() ? decoder.failure()->message : ""; }

TEST(KeyedDecoder, ReadsEveryKind) {
    const Map source{{"text", "a"},     {"id", 12.0},      {"price", 9},           {"flag", true},
                     {"none", nullptr}, {"list", List{1}}, {"map", Map{{"k", 1}}}, {"texts", List{"a", ""}}};
    KeyedDecoder decoder(source);
    EXPECT_EQ(decoder.string("text"), "a");
    EXPECT_EQ(decoder.integer("id"), 12);
    EXPECT_EQ(decoder.number("price"), 9.0);
    EXPECT_TRUE(decoder.boolean("flag"));
    EXPECT_TRUE(decoder.value("none").isNull());
    EXPECT_EQ(decoder.list("list"), List{1});
    EXPECT_EQ(decoder.stringList("texts"), (std::vector<std::string>{"a", ""}));
    EXPECT_EQ(decoder.map("map"), (Map{{"k", 1}}));

    EXPECT_EQ(decoder.optionalString("text"), "a");
    EXPECT_EQ(decoder.optionalInteger("id"), 12);
    EXPECT_EQ(decoder.optionalNumber("price"), 9.0);
    EXPECT_EQ(decoder.optionalBoolean("flag"), true);
    EXPECT_EQ(decoder.optionalList("list"), List{1});
    EXPECT_EQ(decoder.optionalMap("map"), (Map{{"k", 1}}));
    for (const char* key : {"none", "absent"}) {
        EXPECT_FALSE(decoder.optionalString(key) || decoder.optionalInteger(key) || decoder.optionalNumber(key) ||
                     decoder.optionalBoolean(key) || decoder.optionalMap(key) || decoder.optionalList(key) ||
                     decoder.optionalValue(key) || decoder.present(key));
        EXPECT_FALSE(decoder.optionalNested(key, [](KeyedDecoder& child) { return child.string("never"); }));
    }
    EXPECT_EQ(failureOf(decoder), "");
}

TEST(KeyedDecoder, NamesWhatItWantedAndWhatItFound) {
    const Map source{{"v", 12.5}, {"n", nullptr}, {"t", "x"}, {"l", List{Map{}, 3}}};
    const auto failureAfter = [&](auto read) {
        KeyedDecoder decoder(source);
        read(decoder);
        return failureOf(decoder);
    };
    const auto inner = [](KeyedDecoder& child) { return child.source().size(); };
    EXPECT_EQ(failureAfter([](auto& d) { d.string("v"); }), "v: expected text, found a number");
    EXPECT_EQ(failureAfter([](auto& d) { d.integer("v"); }), "v: expected an integer, found a number");
    EXPECT_EQ(failureAfter([](auto& d) { d.string("n"); }), "n: expected text, found null");
    EXPECT_EQ(failureAfter([](auto& d) { d.number("t"); }), "t: expected a number, found text");
    EXPECT_EQ(failureAfter([](auto& d) { d.boolean("gone"); }), "gone: expected a boolean, found nothing");
    EXPECT_EQ(failureAfter([](auto& d) { d.value("gone"); }), "gone: expected a value, found nothing");
    EXPECT_EQ(failureAfter([](auto& d) { d.optionalMap("t"); }), "t: expected a map, found text");
    EXPECT_EQ(failureAfter([&](auto& d) { d.nested("t", inner); }), "t: expected a map, found text");
    EXPECT_EQ(failureAfter([&](auto& d) { d.optionalNested("t", inner); }), "t: expected a map, found text");
    EXPECT_EQ(failureAfter([&](auto& d) { d.nestedList("t", inner); }), "t: expected a list, found text");
    EXPECT_EQ(failureAfter([&](auto& d) { d.nestedList("l", inner); }), "l[1]: expected a map, found a number");
    EXPECT_EQ(failureAfter([](auto& d) { d.stringList("l"); }), "l[0]: expected text, found a map");
    EXPECT_EQ(failureAfter([](auto& d) { d.fail("v", "too odd"); }), "v: too odd");
}

TEST(KeyedDecoder, TheFirstFailureStaysWithItsWholePath) {
    const Map source{
        {"data", Map{{"items", List{Map{{"options", Map{{"right", "r"}}}}, Map{{"options", Map{{"right", 1}}}}}},
                     {"later", 5}}}};
    KeyedDecoder decoder(source);
    const auto rights = decoder.nested("data", [](KeyedDecoder& data) {
        auto list = data.nestedList("items", [](KeyedDecoder& item) {
            return item.nested("options", [](KeyedDecoder& options) { return options.string("right"); });
        });
        // Reads after a failure yield defaults and do not replace it.
        EXPECT_EQ(data.integer("later"), 0);
        EXPECT_EQ(data.optionalInteger("later"), std::nullopt);
        data.string("gone");
        data.fail("later", "bad");
        return list;
    });
    EXPECT_EQ(rights, (std::vector<std::string>{"r", ""}));
    EXPECT_EQ(failureOf(decoder), "data.items[1].options.right: expected text, found a number");
}

TEST(KeyedDecoder, AFailureCanBeTakenApart) {
    using Kind = DecodingFailure::Kind;
    const Map source{{"data", Map{{"items", List{Map{{"id", "x"}, {"name", nullptr}, {"tags", List{"a", nullptr}}}}}}}};
    const auto failureAfter = [&](auto read) {
        KeyedDecoder decoder(source);
        decoder.nested("data", [&](KeyedDecoder& data) {
            return data.nestedList("items", [&](KeyedDecoder& item) {
                read(item);
                return 0;
            });
        });
        return decoder.failure().value();
    };
    const auto failure = [](Kind kind, const char* subject, const char* path, const char* reason) {
        return DecodingFailure{{std::string(path) + ": " + reason}, kind, subject, path};
    };
    EXPECT_EQ(failureAfter([](auto& d) { d.integer("id"); }),
              failure(Kind::typeMismatch, "integer", "data.items[0].id", "expected an integer, found text"));
    EXPECT_EQ(failureAfter([](auto& d) { d.string("gone"); }),
              failure(Kind::keyNotFound, "gone", "data.items[0].gone", "expected text, found nothing"));
    EXPECT_EQ(failureAfter([](auto& d) { d.string("name"); }),
              failure(Kind::valueNotFound, "text", "data.items[0].name", "expected text, found null"));
    EXPECT_EQ(failureAfter([](auto& d) { d.stringList("tags"); }),
              failure(Kind::valueNotFound, "text", "data.items[0].tags[1]", "expected text, found null"));
    EXPECT_EQ(failureAfter([](auto& d) { d.fail("id", "unknown"); }),
              failure(Kind::dataCorrupted, "", "data.items[0].id", "unknown"));
}

TEST(KeyedDecoder, RemarksAreNoFailuresAndTheirNumberIsBounded) {
    const Map source{{"data", Map()}};
    KeyedDecoder decoder(source);
    for (std::size_t i = 0; i <= KeyedDecoder::maximumRemarks; ++i) {
        decoder.nested("data", [&](KeyedDecoder& data) {
            data.remark("url", "odd " + std::to_string(i));
            return 0;
        });
    }
    EXPECT_FALSE(decoder.failed());
    ASSERT_EQ(decoder.remarks().size(), KeyedDecoder::maximumRemarks);
    EXPECT_EQ(decoder.remarks()[1], "data.url: odd 1");
}

} // namespace
