#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "zentavo/foundation/Value.h"

namespace {

using namespace zentavo;

/// What a map is to be, without an index.
struct PlainMap {
    std::vector<std::pair<std::string, int>> entries;

    auto find(const std::string& key) {
        return std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry.first == key; });
    }
    void set(const std::string& key, int value) {
        if (auto entry = find(key); entry != entries.end()) {
            entry->second = value;
        } else {
            entries.emplace_back(key, value);
        }
    }
    bool remove(const std::string& key) {
        const auto entry = find(key);
        const bool present = entry != entries.end();
        if (present) {
            entries.erase(entry);
        }
        return present;
    }
};

void expectSame(const Map& map, PlainMap& plain, const std::string& key) {
    ASSERT_EQ(map.size(), plain.entries.size());
    const auto entry = plain.find(key);
    const Value* found = map.find(key);
    ASSERT_EQ(found != nullptr, entry != plain.entries.end()) << key;
    if (found != nullptr) {
        ASSERT_EQ(*found, Value(entry->second));
    }
    std::size_t position = 0;
    for (const Map::Entry& present : map) {
        ASSERT_EQ(present.key, plain.entries[position].first);
        ASSERT_EQ(present.value, Value(plain.entries[position].second));
        ++position;
    }
}

// The key range decides how large the maps grow: without an index, about its threshold, and well beyond.
TEST(Map, BehavesLikeAPlainListOfEntries) {
    for (const int keyRange : {5, 20, 34, 300}) {
        std::mt19937 random(20260105U + static_cast<unsigned>(keyRange));
        Map map;
        PlainMap plain;
        for (int step = 0; step < 3000; ++step) {
            const std::string key = "key " + std::to_string(random() % static_cast<unsigned>(keyRange));
            switch (random() % 8) {
            case 0:
            case 1:
                ASSERT_EQ(map.remove(key), plain.remove(key));
                break;
            case 2: {
                const Map copy = map;
                ASSERT_EQ(copy, map);
                map = copy;
                break;
            }
            case 3: {
                Map moved = std::move(map);
                map = std::move(moved);
                break;
            }
            default:
                map.set(key, step);
                plain.set(key, step);
            }
            expectSame(map, plain, key);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST(Map, EqualityIgnoresOrderAndNothingElse) {
    EXPECT_EQ((Map{{"a", 1}, {"b", 2}}), (Map{{"b", 2}, {"a", 1}}));
    EXPECT_FALSE((Map{{"a", 1}}) == (Map{{"a", 2}}));
    EXPECT_FALSE((Map{{"a", 1}}) == (Map{{"b", 1}}));
    EXPECT_FALSE((Map{{"a", 1}}) == (Map{{"a", 1}, {"b", 1}}));
}

TEST(Map, TheLaterEntryWinsAndTheFirstKeepsThePlace) {
    Map map{{"a", 1}, {"b", 2}, {"a", 3}};
    map.merge({{"c", 4}, {"b", 5}});
    map.merge(map);
    std::string text;
    for (const Map::Entry& entry : map) {
        text += entry.key + std::to_string(*entry.value.asInteger());
    }
    EXPECT_EQ(text, "a3b5c4");
}

TEST(Map, NamesThatShareAPrefixOrHoldNulStayApart) {
    Map map;
    std::string name;
    for (int i = 0; i < 64; ++i) {
        name += i % 3 == 0 ? '\0' : 'x';
        map.set(name, i);
    }
    ASSERT_EQ(map.size(), 64U);
    EXPECT_EQ(*map.find(std::string_view(name).substr(0, 10)), Value(9));
    EXPECT_EQ(map.find("absent"), nullptr);
}

} // namespace
