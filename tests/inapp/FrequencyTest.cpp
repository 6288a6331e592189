#include "zentavo/inapp/Frequency.h"

#include <thread>

#include "tests/inapp/BusyPreferences.h"
#include "tests/inapp/InAppTest.h"
#include "zentavo/inapp/DeliveryResponse.h"

namespace zentavo {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;

class FrequencyTest : public InAppTest {
protected:
    static Map cap(const Map& changes = {}) {
        Map map{{"event", "impression"}, {"value", 2}, {"object", "person"}, {"timeUnit", "daily"}};
        map.merge(changes);
        return map;
    }
    static WebContent content(const Map& changes, std::int64_t story = 1) {
        return DeliveryResponse::decode(answer({campaign(story, changes)}))->webContents.at(0).second;
    }
    void shown(const WebContent& content, const std::string& event = "impression") {
        Frequency::record(*sdk->state(), Frequency::Subject::of(content), event);
    }
    std::optional<DeliveryTrace::Capped> check(const WebContent& content) {
        return Frequency::check(Frequency::load(*sdk->state()), content);
    }
    std::string stored(const char* key) { return store()->string(key).value_or("nothing"); }
};

TEST_F(FrequencyTest, ADailyStoryCapHoldsBackUntilMidnight) {
    const WebContent twice = content({{"frequencyCapping", cap({{"object", "Person"}})}});
    shown(twice);
    EXPECT_EQ(stored("at_freq_capping"), R"({"1":{"timeExpire":1768521600.0,"impression":1}})");
    EXPECT_FALSE(check(twice));
    shown(twice);
    const auto capped = check(twice);
    ASSERT_TRUE(capped);
    EXPECT_EQ(capped->level, CappingLevel::story);
    EXPECT_EQ(capped->limit, 2);
    EXPECT_EQ(capped->counter, 2);

    memory.clock->advance(12h - 1s);
    EXPECT_TRUE(check(twice)) << "23:59:59";
    memory.clock->advance(1s);
    EXPECT_FALSE(check(twice)) << "the entry goes at the very moment in which it expires";
    shown(twice);
    EXPECT_EQ(stored("at_freq_capping"), R"({"1":{"timeExpire":1768608000.0,"impression":1}})");
}

TEST_F(FrequencyTest, PeriodsAreThoseOfTheCalendarInItsZone) {
    // A Thursday noon, seen from five and a half hours further east; weeks begin on Sunday there.
    memory.platform()->calendar =
        std::make_shared<testing::FixedZoneCalendar>(std::chrono::minutes(330), std::chrono::Sunday);
    const std::map<std::string, double> ends{{"hourly", 1768480200},  {"daily", 1768501800},  {"weekly", 1768674600},
                                             {"monthly", 1769884200}, {"yearly", 1798741800}, {"minutely", 1768478400},
                                             {"Daily", 1768478400}};
    for (const auto& [unit, end] : ends) {
        EXPECT_EQ(Frequency::expiry(*memory.platform(), unit), end) << unit;
    }
    EXPECT_EQ(Frequency::expiry(*memory.platform(), std::nullopt), 1768478400);
}

TEST_F(FrequencyTest, TheLogLinesSayLimitAndCount) {
    sdk->setDebug(true);
    for (const auto& [member, level] :
         std::map<std::string, std::string>{{"frequencyCapping", "story"},
                                            {"destinationFrequencyCapping", "destination"},
                                            {"zoneFrequencyCapping", "zone"}}) {
        memory.console->clear();
        const Map changes{{member, cap({{"value", 1}})}};
        shown(content(changes));
        offer({campaign(1, changes)});
        trackAndSettle();
        EXPECT_THAT(logged(), Contains("Frequency via " + level + " setup 1, cached 1"));
    }
    memory.console->clear();
    shown(content({{"zoneFrequencyCapping", Map{{"event", "click"}, {"value", 1}, {"timeUnit", "hourly"}}}}));
    EXPECT_THAT(logged(), ::testing::ElementsAre(
                              ::testing::StartsWith("Frequency: {\"story\":{"), "frequencyCapping: none",
                              "destinationFrequencyCapping: none",
                              R"(zoneFrequencyCapping: {"event":"click","value":1,"timeUnit":"hourly"})", "zoneId: 9"));
}

TEST_F(FrequencyTest, WhatIsNoLimitNeverBlocks) {
    store()->set("at_freq_capping", R"({"1":{"timeExpire":99999999999,"impression":50}})");
    EXPECT_TRUE(check(content({{"frequencyCapping", cap()}})));
    for (const Map& changes : {Map{{"value", 0}}, Map{{"value", -1}}, Map{{"value", nullptr}}, Map{{"value", 51}},
                               Map{{"event", ""}}, Map{{"event", "click"}}, Map{{"timeUnit", ""}},
                               Map{{"timeUnit", nullptr}}, Map{{"object", "session"}}, Map{{"object", ""}}}) {
        EXPECT_FALSE(check(content({{"frequencyCapping", cap(changes)}}))) << json::write(changes).value();
    }
    // A unit that is none makes entries that the next look throws away.
    store()->remove("at_freq_capping");
    const WebContent odd = content({{"frequencyCapping", cap({{"timeUnit", "minutely"}, {"value", 1}})}});
    shown(odd);
    EXPECT_EQ(stored("at_freq_capping"), R"({"1":{"timeExpire":1768478400.0,"impression":1}})");
    EXPECT_FALSE(check(odd));
}

TEST_F(FrequencyTest, OnlyAPersonsStoryIsCountedAndZonesAreShared) {
    const Map limit{{"event", "impression"}, {"value", 2}, {"timeUnit", "monthly"}};
    shown(content({{"frequencyCapping", cap({{"object", "session"}})}, {"zoneFrequencyCapping", limit}}, 1));
    EXPECT_EQ(stored("at_freq_capping"), "nothing");
    EXPECT_EQ(stored("at_freq_capping_destination"), "nothing");
    shown(content({{"zoneFrequencyCapping", limit}}, 2));
    EXPECT_EQ(stored("at_freq_capping_zone"), R"({"9":{"timeExpire":1769904000.0,"impression":2}})");
    EXPECT_EQ(check(content({{"zoneFrequencyCapping", limit}}, 3))->level, CappingLevel::zone);
    // Clicks are counted apart, under the same end of the period.
    const Map clicks{{"event", "click"}, {"value", 1}, {"timeUnit", "monthly"}};
    EXPECT_FALSE(check(content({{"zoneFrequencyCapping", clicks}})));
    shown(content({{"zoneFrequencyCapping", clicks}}), "click");
    EXPECT_TRUE(check(content({{"zoneFrequencyCapping", clicks}})));
    EXPECT_EQ(stored("at_freq_capping_zone"), R"({"9":{"timeExpire":1769904000.0,"impression":2,"click":1}})");
}

TEST_F(FrequencyTest, StoredGarbageCountsAsNothing) {
    const WebContent once = content({{"frequencyCapping", cap({{"value", 1}})}});
    for (const char* text :
         {"", "garbage", "[1]", "{}", R"({"1":7})", R"({"1":{"timeExpire":99999999999,"impression":"3"}})",
          R"({"1":{"timeExpire":"soon","impression":1.5}})"}) {
        store()->set("at_freq_capping", text);
        EXPECT_FALSE(check(once)) << text;
        shown(once);
        EXPECT_EQ(stored("at_freq_capping"), R"({"1":{"timeExpire":1768521600.0,"impression":1}})") << text;
    }
    store()->set("at_freq_capping", R"({"2":{"impression":4}})");
    EXPECT_TRUE(check(content({{"frequencyCapping", cap()}}, 2))) << "an entry without an end stays";
}

TEST_F(FrequencyTest, CountersThatOverflowAndACalendarThatCannotTellAreFaults) {
    std::vector<std::string> faults;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault& fault) { faults.push_back(fault.message); });
    const WebContent daily = content({{"frequencyCapping", cap()}});
    store()->set("at_freq_capping", R"({"1":{"impression":9223372036854775807}})");
    entryPoint("test", [&] { shown(daily); });
    memory.clock->set(platform::TimePoint::max());
    entryPoint("test", [&] { shown(daily); });
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_THAT(faults[0], ::testing::HasSubstr("cannot go any higher"));
    EXPECT_THAT(faults[1], ::testing::HasSubstr("calendar"));
}

TEST_F(FrequencyTest, ACountThatABusyStoreMakesLaterIsTheSame) {
    const auto medium = memory.preferences->suite("medium");
    const auto busy = std::make_shared<BusyPreferences>(medium);
    memory.platform()->preferences = busy;
    restart();
    activate();
    const Map limit{{"event", "impression"}, {"value", 2}, {"timeUnit", "daily"}};
    const std::string name = "an event with a name that lies on the heap";
    shown(content({{"frequencyCapping", cap()}, {"zoneFrequencyCapping", limit}}), std::string(name));
    shown(content({{"zoneFrequencyCapping", limit}}), std::string(name));
    EXPECT_EQ(medium->string("at_freq_capping"), std::nullopt);
    busy->flush();
    EXPECT_EQ(medium->string("at_freq_capping"), R"({"1":{"timeExpire":1768521600.0,")" + name + "\":1}}");
    EXPECT_EQ(medium->string("at_freq_capping_zone"), R"({"9":{"timeExpire":1768521600.0,")" + name + "\":2}}");

    medium->set("at_freq_capping", R"({"1":{"impression":9223372036854775806}})");
    shown(content({{"frequencyCapping", cap()}}));
    shown(content({{"frequencyCapping", cap()}}));
    busy->flush();
    EXPECT_THAT(stored("at_freq_capping"), ::testing::HasSubstr("9223372036854775807")) << "what overflows stays";
}

TEST_F(FrequencyTest, NoCountIsLostBetweenThreads) {
    const WebContent zone =
        content({{"zoneFrequencyCapping", Map{{"event", "impression"}, {"value", 1}, {"timeUnit", "yearly"}}}});
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                shown(zone);
                check(zone);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(check(zone)->counter, 400);
}

} // namespace
} // namespace zentavo
