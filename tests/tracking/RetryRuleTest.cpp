#include "zentavo/tracking/RetryRule.h"

#include <gtest/gtest.h>

namespace zentavo {
namespace {

using namespace std::chrono_literals;

TEST(RetryRule, WaitsAMinuteThreeTimesThenAnHourUntilTheDayIsOver) {
    // One request that keeps failing at once: the clock is turned by each delay.
    const platform::TimePoint first{1'700'000'000s};
    const auto stop = first + RetryRule::period;
    auto now = first;
    std::vector<std::chrono::seconds> delays;
    for (int attempt = 1; attempt < 1000; ++attempt) {
        const auto delay = RetryRule::next(attempt, now, stop);
        if (!delay) {
            break;
        }
        delays.push_back(*delay);
        now += *delay;
    }
    ASSERT_EQ(delays.size(), 26U);
    for (std::size_t i = 0; i < delays.size(); ++i) {
        EXPECT_EQ(delays[i], i < 3 ? 60s : 3600s) << "attempt " << i + 1;
    }
    EXPECT_EQ(now, first + 180s + 23h); // the next would start 3 minutes after the day
    EXPECT_LT(now, stop);
}

TEST(RetryRule, ANewTryMustStartBeforeTheEnd) {
    const platform::TimePoint stop{1'700'000'000s};
    EXPECT_EQ(RetryRule::next(1, stop - 61s, stop), 60s);
    EXPECT_EQ(RetryRule::next(1, stop - 60s, stop), std::nullopt);
    EXPECT_EQ(RetryRule::next(4, stop - 3600s - 1ns, stop), 3600s);
    EXPECT_EQ(RetryRule::next(4, stop - 3600s, stop), std::nullopt);
    EXPECT_EQ(RetryRule::next(4, stop + 1h, stop), std::nullopt);
}

} // namespace
} // namespace zentavo
