#include <csignal>
#include <fstream>

#include "tests/e2e/DevServer.h"

namespace zentavo::e2e {
namespace {

class FaultTest : public EndToEndTest {};

TEST_F(FaultTest, WhateverTheCollectorDoesTheNextEventArrives) {
    ASSERT_EQ(console({"activate", "wait"}), 0);
    struct Case {
        const char* fault;
        const char* wait;
    };
    const std::vector<Case> cases{
        {"status=500", "wait"},      {"status=404", "wait"},
        {"reset=1", "wait"},         {"reset=mid", "wait"},
        {"empty=1", "wait"},         {"body=%7Bgarbage", "wait"},
        {"size=104857600", "wait"},  // 100 MB
        {"redirect=/event", "wait"}, // for ever
        {"hang=1", "wait:0.2"},      {"drip=1&body=slowly", "wait:0.2"},
    };
    std::size_t before = 1;
    for (const Case& each : cases) {
        // Every request of this process meets the fault but the last, which goes out beside it.
        server.fault(std::string("path=/event&times=1&") + each.fault);
        const std::string name = "after" + std::to_string(before);
        ASSERT_EQ(console({"--time-scale", "6000", "activate", "track:bad", each.wait, "track:" + name, "wait:1"}), 0)
            << each.fault << "\n"
            << output;
        const auto found = names(server.events(before + 2));
        ASSERT_THAT(found, ::testing::Contains(name)) << each.fault << "\n" << output;
        before = found.size();
        EXPECT_EQ(output.find("Error"), std::string::npos) << "diagnostics are silent without debug: " << output;
    }
}

TEST_F(FaultTest, ACollectorThatIsDownStopsNobody) {
    const std::string nobody = "http://127.0.0.1:9"; // discard: nothing listens there
    ASSERT_EQ(console({"activate", "track:a", "track:b", "wait:0.5"}, nobody), 0) << output;
    EXPECT_THAT(output, ::testing::HasSubstr("no answer"));
    // The store is whole: the next start returns.
    ASSERT_EQ(console({"activate", "track:c", "wait"}), 0);
    const auto events = server.events(1);
    ASSERT_THAT(names(events), ::testing::ElementsAre("c"));
    EXPECT_EQ(*events[0].find("extra")->asMap()->find("visitor_type"), "return");
}

TEST_F(FaultTest, AnAnswerThatBreaksOffCountsByItsStatus) {
    ASSERT_EQ(console({"activate", "wait"}), 0);
    // The collector has said that it took the event: sent again, it would count twice.
    server.fault("path=/event&times=1&reset=mid");
    ASSERT_EQ(console({"--time-scale", "6000", "activate", "track:taken", "wait"}), 0) << output;
    EXPECT_THAT(output, ::testing::Not(::testing::HasSubstr("tries again")));
    EXPECT_THAT(names(server.events(2)), ::testing::ElementsAre("app_install", "taken"));

    server.fault("path=/event&times=1&reset=mid&status=500");
    ASSERT_EQ(console({"--time-scale", "6000", "activate", "track:refused", "wait"}), 0) << output;
    EXPECT_THAT(output, ::testing::HasSubstr("tries again in 60 s"));
    const auto events = server.events(4);
    ASSERT_THAT(names(events), ::testing::ElementsAre("app_install", "taken", "refused", "refused"));
    EXPECT_EQ(events[2], events[3]);
}

TEST_F(FaultTest, ACollectorThatDiesInMidRequestTakesNobodyAlong) {
    ASSERT_EQ(console({"activate", "wait"}), 0);
    const DevServer dying;
    dying.fault("path=/event&hang=1");
    Process process(consoleCommand({"activate", "track:a", "wait:2", "show"}, dying.url()));
    ASSERT_EQ(dying.requests("/event", 1).size(), 1u);
    dying.kill();
    EXPECT_EQ(process.wait(), 0) << process.output();
    EXPECT_THAT(process.output(), ::testing::HasSubstr("/event -> no answer"));
    EXPECT_THAT(process.output(), ::testing::HasSubstr("tries again in 60 s"));
    EXPECT_THAT(process.output(), ::testing::HasSubstr("portal 33167"));
    ASSERT_EQ(console({"activate", "track:b", "wait"}), 0);
    EXPECT_THAT(names(server.events(2)), ::testing::ElementsAre("app_install", "b"));
}

TEST_F(FaultTest, KilledBetweenAnyTwoStepsOfActivationTheNextStartIsWhole) {
    int killed = 0;
    for (int step = 0; step < 100; ++step) {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
        Process victim({ZENTAVO_ACTIVATION_VICTIM, folder, server.url(), std::to_string(step)});
        const int status = victim.wait();
        if (status == 0) {
            break; // it lived through all its steps
        }
        ASSERT_EQ(status, -SIGKILL) << victim.output();
        ++killed;
        const std::string name = "second" + std::to_string(step);
        ASSERT_EQ(console({"activate", "track:" + name, "show", "wait"}), 0) << "after step " << step << output;
        EXPECT_THAT(output, ::testing::HasSubstr("portal 33167, props 555"));
        EXPECT_THAT(names(server.events(1)), ::testing::Contains(name));
    }
    EXPECT_GE(killed, 6); // visitor type, portal, props, the install event, "installed", synchronise
}

TEST_F(FaultTest, ADamagedStoreIsPutAsideAndAFreshOneMade) {
    ASSERT_EQ(console({"activate", "identify:c1", "wait"}), 0);
    int damaged = 0;
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
        if (file.is_regular_file()) {
            std::ofstream(file.path(), std::ios::trunc) << "this is no database, whatever its name says";
            ++damaged;
        }
    }
    ASSERT_GT(damaged, 0);
    for (int start = 0; start < 2; ++start) {
        ASSERT_EQ(console({"activate", "show", "track:after", "wait"}), 0) << output;
        EXPECT_THAT(output, ::testing::HasSubstr("customer \"\""));
    }
    const auto events = server.events(4);
    // Requests of one start go out beside each other and arrive in any order.
    EXPECT_THAT(names(events), ::testing::UnorderedElementsAre("app_install", "app_install", "after", "after"));
}

TEST_F(FaultTest, AStoreThatCannotBeMadeIsReplacedByMemory) {
    std::filesystem::remove_all(folder);
    std::ofstream(folder) << "a file where the folder should be";
    ASSERT_EQ(console({"activate", "uid:u1", "show", "track:a", "wait"}), 0) << output;
    EXPECT_THAT(output, ::testing::HasSubstr("uid u1"));
    EXPECT_THAT(names(server.events(2)), ::testing::UnorderedElementsAre("app_install", "a"));
}

TEST_F(FaultTest, TenThousandEventsIntoAnOutageStayWithinBounds) {
    std::vector<std::string> verbs{"activate"};
    for (int i = 0; i < 10000; ++i) {
        verbs.push_back("track:e" + std::to_string(i % 100));
    }
    verbs.push_back("memory");
    ASSERT_EQ(console(verbs, "http://127.0.0.1:9"), 0) << output.substr(output.size() - 500);
    const std::size_t at = output.rfind("resident ");
    ASSERT_NE(at, std::string::npos);
    const long kilobytes = std::stol(output.substr(at + 9));
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    EXPECT_GT(kilobytes, 0) << "most of it the sanitizer's";
#else
    EXPECT_LT(kilobytes, 64 * 1024) << "10,000 waiting events, body and bookkeeping";
#endif
}

} // namespace
} // namespace zentavo::e2e
