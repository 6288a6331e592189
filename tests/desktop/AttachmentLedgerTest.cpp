// Pictures that a process was killed over.

#include "ports/desktop/AttachmentLedger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/MemoryPlatform.h"

namespace zentavo::tests {
namespace {

using desktop::AttachmentLedger;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AttachmentLedgerTest : public ::testing::Test {
protected:
    /// One process's.
    AttachmentLedger ledger() { return {memory.attachmentFiles, suite, *memory.platform()->random}; }
    std::vector<std::string> files() const {
        std::vector<std::string> paths;
        for (const auto& [path, bytes] : memory.attachmentFiles->files()) {
            paths.push_back(path.substr(path.rfind('/') + 1));
        }
        return paths;
    }

    testing::MemoryPlatform memory;
    const std::shared_ptr<platform::Preferences> suite = memory.platform()->preferences->standard();
};

TEST_F(AttachmentLedgerTest, WhatOneProcessLeavesTheNextOneRemoves) {
    auto killed = ledger();
    const std::string removed = killed.write("1", "a", "x").value();
    const std::string shown = killed.write("2", "b", "x").value();
    EXPECT_TRUE(killed.write("3", "c", "x"));
    EXPECT_FALSE(killed.write("3", "c", "x")) << "one that is there is not written";
    killed.remove(removed);
    killed.sweep({});
    EXPECT_THAT(files(), ElementsAre("b", "c")) << "its own are in use";

    auto next = ledger();
    EXPECT_TRUE(next.write("4", "d", "x"));
    EXPECT_TRUE(memory.attachmentFiles->write("5", "e", "x")) << "somebody else's";
    next.sweep({shown});
    EXPECT_THAT(files(), ElementsAre("b", "d", "e"));
    ledger().sweep({});
    EXPECT_THAT(files(), ElementsAre("e"));
    EXPECT_FALSE(suite->object("ZentavoAttachmentFiles")) << "nothing is left to be known";
}

TEST_F(AttachmentLedgerTest, IsBoundedAndTakesDamageForNothing) {
    auto killed = ledger();
    for (std::size_t i = 0; i <= AttachmentLedger::maximumCount; ++i) {
        EXPECT_TRUE(killed.write(std::to_string(i), std::to_string(i), "x"));
    }
    ledger().sweep({});
    EXPECT_THAT(files(), ElementsAre("0"));
    for (const Value& damaged : {Value("text"), Value(List{1, Map{{"path", 1}}, Map{{"path", "/memory/tmp/0/0"}}})}) {
        suite->set("ZentavoAttachmentFiles", damaged);
        ledger().sweep({});
    }
    EXPECT_THAT(files(), ElementsAre("0"));
}

} // namespace
} // namespace zentavo::tests
