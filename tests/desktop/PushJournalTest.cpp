// Pushes that a process was killed over.

#include "ports/desktop/PushJournal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/MemoryPlatform.h"

namespace zentavo::tests {
namespace {

using desktop::PushJournal;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PushJournalTest : public ::testing::Test {
protected:
    std::vector<std::string> left(const std::set<std::string>& known = {}) {
        std::vector<std::string> bodies;
        for (const auto& each : journal.takeUp(known).entries) {
            bodies.push_back(each.body);
        }
        return bodies;
    }

    testing::MemoryPlatform memory;
    const PushJournal journal{memory.platform()->preferences->standard()};
};

TEST_F(PushJournalTest, KeepsWhatIsNotShownYetInOrder) {
    for (const char* each : {"a", "b", "c"}) {
        journal.add(each, std::string("body ") + each);
    }
    journal.remove("b");
    journal.remove("another");
    EXPECT_THAT(left(), ElementsAre("body a", "body c"));
    EXPECT_THAT(left({"a"}), ElementsAre("body c")) << "what has just come is under way already";
    journal.remove("a");
    journal.remove("c");
    EXPECT_THAT(left(), IsEmpty());
    EXPECT_FALSE(memory.platform()->preferences->standard()->object("ZentavoPushJournal"));
}

TEST_F(PushJournalTest, APushThatEndsEveryProcessIsGivenUp) {
    journal.add("a", "deadly");
    for (std::int64_t i = 1; i < PushJournal::maximumAttempts; ++i) {
        EXPECT_THAT(left(), ElementsAre("deadly"));
    }
    EXPECT_EQ(journal.takeUp({}).givenUp, 1U);
    EXPECT_EQ(journal.takeUp({}).givenUp, 0U);
}

TEST_F(PushJournalTest, IsBoundedAndTakesWhatIsDamagedForNothing) {
    for (std::size_t i = 0; i <= PushJournal::maximumCount; ++i) {
        journal.add(std::to_string(i), std::to_string(i));
    }
    const auto bodies = left();
    ASSERT_EQ(bodies.size(), PushJournal::maximumCount);
    EXPECT_EQ(bodies.front(), "1");

    const auto suite = memory.platform()->preferences->standard();
    suite->set("ZentavoPushJournal", List{"a", Map{{"identifier", 1}}, Map{{"identifier", ""}}});
    EXPECT_THAT(left(), IsEmpty());
    journal.add("b", "good");
    EXPECT_THAT(left(), ElementsAre("good"));
}

} // namespace
} // namespace zentavo::tests
