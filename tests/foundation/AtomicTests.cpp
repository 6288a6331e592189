#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "zentavo/foundation/Atomic.h"

using zentavo::Atomic;

TEST(Atomic, CompareAndSetLosesNoStepBetweenThreads) {
    constexpr int threadCount = 4;
    constexpr int stepsEach = 2000;
    Atomic<int> sum(0);
    Atomic<std::string> text(std::string(64, 'a'));
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < stepsEach; ++i) {
                int seen = sum.get();
                while (!sum.compareAndSet(seen, seen + 1)) {
                    seen = sum.get();
                }
                // A value is seen whole, whoever wrote it last.
                text.set(std::string(64, static_cast<char>('a' + t)));
                const std::string whole = text.get();
                ASSERT_EQ(whole, std::string(64, whole.at(0)));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(sum.get(), threadCount * stepsEach);
}

TEST(Atomic, LabelsTellInstancesApart) {
    const Atomic<int> first(1);
    const Atomic<int> second(1);
    EXPECT_EQ(first.label().rfind("com.zentavo.atomic.", 0), 0U);
    EXPECT_NE(first.label(), second.label());
}
