// What Preferences.h promises, held against every port.

#include <cmath>
#include <limits>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>

#include "tests/ports/Machine.h"

namespace zentavo::tests {
namespace {

using ::testing::Optional;

/// Two processes of one program with the same suite open.
class PreferencesConformance : public MachineTest {
protected:
    const std::shared_ptr<platform::PreferencesProvider> provider = machine->process();
    const std::shared_ptr<platform::PreferencesProvider> otherProvider = machine->process();
    const std::shared_ptr<platform::Preferences> suite = provider->suite("group.shop");
    const std::shared_ptr<platform::Preferences> foreign = otherProvider->suite("group.shop");
};

std::optional<Value> increment(const std::optional<Value>& old) {
    return Value(old ? old->exactInt64().value_or(0) + 1 : 1);
}

TEST_P(PreferencesConformance, KeepsEveryKindOfValueAsItWas) {
    const Map values = {{"text", "Grüße \"\\\n\t" + std::string(1, '\0')},
                        {"", "an empty key"},
                        {"empty text", ""},
                        {"large", std::numeric_limits<std::int64_t>::max()},
                        {"number", 0.1},
                        {"flag", false},
                        {"list", List{1, "two", nullptr, List{}}},
                        {"map", Map{{"b", 1}, {"a", Map{{"c", true}}}}}};
    for (const auto& [key, value] : values) {
        suite->set(key, value);
    }
    for (const auto& [key, value] : values) {
        EXPECT_THAT(suite->object(key), Optional(value)) << key;
        EXPECT_THAT(foreign->object(key), Optional(value)) << key;
    }
    const auto map = foreign->map("map");
    ASSERT_TRUE(map);
    EXPECT_EQ(map->begin()->key, "b") << "a map's order is kept";
}

TEST_P(PreferencesConformance, CoercesAsHostsKnowIt) {
    const Map values = {{"integer", 12}, {"number", 1.5}, {"flag", true}, {"text", " 7.25 Euro"}, {"list", List{1}}};
    for (const auto& [key, value] : values) {
        suite->set(key, value);
    }
    EXPECT_THAT(suite->string("integer"), Optional(std::string("12")));
    EXPECT_THAT(suite->string("number"), Optional(std::string("1.5")));
    EXPECT_THAT(suite->string("flag"), Optional(std::string("1")));
    EXPECT_EQ(suite->string("list"), std::nullopt);
    EXPECT_EQ(suite->number("integer"), 12);
    EXPECT_EQ(suite->number("text"), 7.25);
    EXPECT_EQ(suite->number("flag"), 1);
    EXPECT_EQ(suite->number("list"), 0);
    EXPECT_EQ(suite->number("nothing"), 0);

    EXPECT_EQ(suite->integer("text"), 7);
    EXPECT_EQ(suite->integer("flag"), 1);
    EXPECT_EQ(suite->integer("list"), 0);
    suite->set("most", std::numeric_limits<std::int64_t>::max() - 1);
    EXPECT_EQ(suite->integer("most"), std::numeric_limits<std::int64_t>::max() - 1) << "no detour over doubles";
    suite->set("beyond", -1e300);
    EXPECT_EQ(suite->integer("beyond"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(suite->map("list"), std::nullopt);
}

TEST_P(PreferencesConformance, TheVersionTellsOfEveryWrite) {
    suite->set("a", 1);
    suite->object("a");
    auto before = suite->version();
    ASSERT_TRUE(before);
    suite->object("absent");
    EXPECT_EQ(suite->version(), before) << "a read changes nothing";

    const std::function<void()> writes[] = {
        [&] { suite->set("a", 2); },
        [&] { foreign->set("a", 3); },
        [&] { suite->update("b", increment); },
        [&] { foreign->set("other", 1); },
        [&] { foreign->update("a", increment); },
        [&] { suite->remove("a"); },
    };
    for (const auto& write : writes) {
        write();
        EXPECT_NE(suite->version(), before);
        suite->object("a"); // who cannot tell must read first
        const auto now = suite->version();
        EXPECT_TRUE(now);
        EXPECT_NE(now, before);
        before = now;
    }
}

TEST_P(PreferencesConformance, NullIsNothing) {
    suite->set("a", 1);
    suite->set("b", 1);
    suite->set("c", 1);
    suite->set("a", nullptr);
    suite->remove("b");
    suite->update("c", [](const auto&) { return Value(nullptr); });
    suite->remove("never there");
    for (const char* key : {"a", "b", "c", "never there"}) {
        EXPECT_EQ(suite->object(key), std::nullopt) << key;
        EXPECT_EQ(foreign->object(key), std::nullopt) << key;
    }
}

TEST_P(PreferencesConformance, RefusesWhatJsonCannotSayAndWhatIsTooLong) {
    Value deep;
    for (int i = 0; i < 1000; ++i) {
        deep = List{std::move(deep)};
    }
    const List refused = {std::nan(""), List{INFINITY}, "\xff\xfe", deep,
                          std::string(platform::Preferences::maximumValueBytes, 'x')};
    suite->set("key", "stays");
    for (const Value& value : refused) {
        suite->set("key", value);
        suite->update("key", [&](const auto&) { return value; });
    }
    EXPECT_THAT(suite->string("key"), Optional(std::string("stays")));
    EXPECT_THAT(foreign->string("key"), Optional(std::string("stays")));
    EXPECT_EQ(machine->log->entries().size(), 2 * refused.size());
}

TEST_P(PreferencesConformance, OneNameIsOneSuite) {
    EXPECT_EQ(provider->suite("group.shop"), suite);
    EXPECT_EQ(provider->standard(), provider->standard());

    // Names that a careless medium might take for one another, or for a place outside.
    const std::vector<std::string> names = {"group.shop2", "Group.shop", "..", ".",    ".hidden",          "a b",
                                            "a%20b",       "a\\b",       "ü",  "a\nb", "group.shop.sqlite"};
    suite->set("name", "group.shop");
    provider->standard()->set("name", "the standard one");
    for (const std::string& name : names) {
        const auto other = provider->suite(name);
        ASSERT_NE(other, nullptr) << name;
        EXPECT_EQ(other->object("name"), std::nullopt) << name;
        other->set("name", name);
    }
    for (const std::string& name : names) {
        EXPECT_THAT(otherProvider->suite(name)->string("name"), Optional(name));
    }
    EXPECT_THAT(suite->string("name"), Optional(std::string("group.shop")));
    EXPECT_THAT(otherProvider->standard()->string("name"), Optional(std::string("the standard one")));
}

TEST_P(PreferencesConformance, RefusesSuites) {
    for (const std::string& name :
         {std::string(), std::string("com.example.shop"), std::string("a/b"), std::string("a\0b", 3)}) {
        EXPECT_EQ(provider->suite(name), nullptr) << name;
    }
    const auto placeless = machine->processWithoutPlace();
    EXPECT_EQ(placeless->suite("group.shop"), nullptr);
    const auto standard = placeless->standard();
    ASSERT_NE(standard, nullptr);
    standard->set("key", 1);
    standard->update("key", increment);
    standard->synchronise();
    EXPECT_EQ(placeless->standard()->number("key"), 2);
}

TEST_P(PreferencesConformance, SeesForeignWritesAtOnce) {
    EXPECT_EQ(suite->object("key"), std::nullopt);
    for (int i = 1; i <= 100; ++i) {
        foreign->set("key", i);
        ASSERT_EQ(suite->number("key"), i);
        suite->set("mine", i);
        foreign->remove("key");
        ASSERT_EQ(suite->object("key"), std::nullopt);
        suite->update("key", increment);
        ASSERT_EQ(foreign->number("key"), 1);
        ASSERT_EQ(foreign->number("mine"), i);
    }
}

TEST_P(PreferencesConformance, WhatIsSynchronisedOutlivesEveryoneWhoKnewIt) {
    auto writer = machine->process();
    auto written = writer->suite("group.short");
    written->set("text", "kept");
    written->update("counter", increment);
    written->remove("never there");
    written->synchronise();
    written->synchronise();
    EXPECT_THAT(otherProvider->suite("group.short")->string("text"), Optional(std::string("kept")));
    written.reset();
    writer.reset();
    const auto later = machine->process()->suite("group.short");
    EXPECT_THAT(later->string("text"), Optional(std::string("kept")));
    EXPECT_EQ(later->number("counter"), 1);
    later->synchronise(); // with nothing to carry
    EXPECT_EQ(machine->log->entries().size(), 0u);
}

TEST_P(PreferencesConformance, UpdatesAreOneStep) {
    constexpr int rounds = 300;
    std::vector<std::thread> threads;
    for (const auto& shared : {suite, suite, foreign, foreign}) {
        threads.emplace_back([shared] {
            for (int i = 0; i < rounds; ++i) {
                shared->update("counter", increment);
                shared->set("pair", List{i, i});
                const auto pair = shared->object("pair");
                ASSERT_TRUE(pair);
                ASSERT_EQ((*pair->asList())[0], (*pair->asList())[1]);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    // On a busy machine some are still to be made anew, in both processes.
    const auto waiting = [&] {
        return foreign->number("counter") != 4 * rounds || suite->number("counter") != 4 * rounds;
    };
    for (int i = 0; i < 5000 && waiting(); ++i) {
        suite->synchronise();
        foreign->synchronise();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(suite->number("counter"), 4 * rounds);
    EXPECT_EQ(foreign->number("counter"), 4 * rounds);
}

TEST_P(PreferencesConformance, AnUpdateThatUnwindsChangesNothing) {
    suite->set("key", 1);
    const auto fault = [](const std::optional<Value>&) -> std::optional<Value> { throw std::runtime_error("fault"); };
    EXPECT_THROW(suite->update("key", fault), std::runtime_error);
    foreign->update("key", increment);
    EXPECT_EQ(suite->number("key"), 2);
}

ZENTAVO_FOR_EACH_MACHINE(PreferencesConformance);

} // namespace
} // namespace zentavo::tests
