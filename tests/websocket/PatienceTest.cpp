// How long another end is waited for, without a clock.

#include "zentavo/websocket/Patience.h"

#include <gtest/gtest.h>

namespace zentavo::websocket {
namespace {

using Verdict = Patience::Verdict;

TEST(Patience, asksWhoIsSilentAndGivesUpWhenNothingComes) {
    Patience patience;
    EXPECT_FALSE(patience.heard());
    EXPECT_EQ(patience.judge(false, false), Verdict::alive);
    EXPECT_EQ(patience.judge(false, false), Verdict::ask);
    EXPECT_TRUE(patience.heard());
    EXPECT_EQ(patience.judge(false, false), Verdict::alive);
    EXPECT_EQ(patience.judge(false, true), Verdict::alive) << "who does not read hears nothing";
    EXPECT_EQ(patience.judge(false, false), Verdict::ask);
    patience.wrote(100); // also a network behind which nobody is takes this much
    EXPECT_EQ(patience.judge(false, false), Verdict::gone);
}

TEST(Patience, whoTakesWhatWeSendIsAlive) {
    Patience patience;
    for (int i = 0; i < 5; ++i) {
        patience.wrote(1);
        EXPECT_EQ(patience.judge(true, false), Verdict::alive);
    }
    // The last of it leaves within the time; only now there is room for a ping.
    EXPECT_EQ(patience.judge(true, false), Verdict::ask);
    patience.wrote(1000);
    EXPECT_EQ(patience.judge(false, false), Verdict::alive);
    EXPECT_EQ(patience.judge(false, false), Verdict::ask);
    EXPECT_EQ(patience.judge(false, false), Verdict::gone);

    Patience blocked;
    EXPECT_EQ(blocked.judge(true, false), Verdict::ask);
    EXPECT_EQ(blocked.judge(true, false), Verdict::gone) << "neither reads nor answers";
}

TEST(Patience, aGoodbyeMayTakeLongerWhileMuchMoves) {
    Patience patience;
    patience.wrote(1000000);
    patience.beginGoodbye();
    patience.wrote(65536);
    EXPECT_TRUE(patience.mayTakeLonger());
    patience.wrote(5); // a byte a second does not hold us for ever
    EXPECT_FALSE(patience.mayTakeLonger());
}

} // namespace
} // namespace zentavo::websocket
