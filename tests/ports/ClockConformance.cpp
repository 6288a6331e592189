// What Clock.h and Random.h promise, held against every port.

#include <set>

#include <gmock/gmock.h>

#include "tests/ports/Machine.h"

namespace zentavo::tests {
namespace {

using namespace std::chrono_literals;

class ClockConformance : public MachineTest {};

TEST_P(ClockConformance, SteadyTimeNeverGoesBack) {
    const auto clock = machine->clock();
    auto last = clock->steady();
    for (int i = 0; i < 1000; ++i) {
        const auto now = clock->steady();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST_P(ClockConformance, LocalTimeDiffersByTheZoneOnly) {
    const auto clock = machine->clock();
    for (const auto moment : {clock->now(), platform::TimePoint(-1ns), platform::TimePoint(1'719'835'201'999ms)}) {
        const LocalTime local = clock->local(moment);
        const std::chrono::sys_days day =
            std::chrono::year(local.year) / std::chrono::month(static_cast<unsigned>(local.month)) / local.day;
        const auto wall = day + std::chrono::hours(local.hour) + std::chrono::minutes(local.minute) +
                          std::chrono::seconds(local.second);
        const auto offset = wall - std::chrono::floor<std::chrono::seconds>(moment);
        EXPECT_LE(std::chrono::abs(offset), 15h);
        EXPECT_EQ(offset % 1min, 0s);
    }
}

class RandomConformance : public MachineTest {};

TEST_P(RandomConformance, FillsEveryByteWithEveryValue) {
    const auto random = machine->random();
    std::vector<std::set<int>> seen(13);
    std::vector<std::uint8_t> bytes(seen.size());
    for (int i = 0; i < 10'000; ++i) {
        random->fill(bytes);
        for (std::size_t k = 0; k < seen.size(); ++k) {
            seen[k].insert(bytes[k]);
        }
    }
    for (const auto& values : seen) {
        EXPECT_EQ(values.size(), 256u);
    }
}

TEST_P(RandomConformance, DrawsBelowABoundFairly) {
    const auto random = machine->random();
    EXPECT_EQ(random->below(0), 0u);
    EXPECT_EQ(random->below(1), 0u);
    // The bound that an unfair draw would show best: the lower half of the results would come twice as often.
    constexpr std::uint64_t bound = 0xC000'0000'0000'0000U;
    int low = 0;
    for (int i = 0; i < 30'000; ++i) {
        const std::uint64_t drawn = random->below(bound);
        ASSERT_LT(drawn, bound);
        low += drawn < bound / 3 ? 1 : 0;
    }
    EXPECT_NEAR(low, 10'000, 700);
}

ZENTAVO_FOR_EACH_MACHINE(ClockConformance);
ZENTAVO_FOR_EACH_MACHINE(RandomConformance);

} // namespace
} // namespace zentavo::tests
