#include "tests/websocket/conformance/Tally.h"

#include <cstdio>
#include <map>
#include <vector>

#include <gtest/gtest.h>

namespace zentavo::websocket::conformance {
namespace {

struct Count {
    int passed = 0;
    int asked = 0;
};

/// Groups and subjects in the order in which they first came.
class Table : public ::testing::Environment {
public:
    void add(const std::string& subject, const std::string& group, bool passed) {
        place(subjects_, subject);
        place(groups_, group);
        Count& count = counts_[{group, subject}];
        count.passed += passed ? 1 : 0;
        ++count.asked;
    }

    void TearDown() override {
        std::printf("\n%-16s", "passed / asked");
        for (const auto& subject : subjects_) {
            std::printf("%18s", subject.c_str());
        }
        for (const auto& group : groups_) {
            std::printf("\n%-16s", group.c_str());
            for (const auto& subject : subjects_) {
                const auto found = counts_.find({group, subject});
                const std::string cell = found == counts_.end() ? "-"
                                                                : std::to_string(found->second.passed) + " / " +
                                                                      std::to_string(found->second.asked);
                std::printf("%18s", cell.c_str());
            }
        }
        std::printf("\n\n");
    }

private:
    static void place(std::vector<std::string>& list, const std::string& name) {
        for (const auto& known : list) {
            if (known == name) {
                return;
            }
        }
        list.push_back(name);
    }

    std::vector<std::string> subjects_;
    std::vector<std::string> groups_;
    std::map<std::pair<std::string, std::string>, Count> counts_;
};

Table& table = *static_cast<Table*>(::testing::AddGlobalTestEnvironment(new Table)); // which owns it

} // namespace

void judge(const std::string& subject, const std::string& name, bool passed, const std::string& why) {
    table.add(subject, name.substr(0, name.find('/')), passed);
    EXPECT_TRUE(passed) << subject << ": " << name << (why.empty() ? "" : ": ") << why;
}

} // namespace zentavo::websocket::conformance
