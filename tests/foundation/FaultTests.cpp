#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zentavo/foundation/Fault.h"

namespace {

using namespace zentavo;

class ContainedFaults : public testing::Test {
protected:
    void SetUp() override {
        setFaultPolicy(FaultPolicy::contain, [this](const Fault& fault) { handled.push_back(fault); });
        setFaultLog([this](const std::string& line) { logged.push_back(line); });
    }
    void TearDown() override {
        setFaultPolicy(FaultPolicy::stop);
        setFaultLog(nullptr);
    }

    std::vector<Fault> handled;
    std::vector<std::string> logged;
};

TEST(FaultDeathTest, StopsTheProcessAndNamesThePlace) {
    EXPECT_EQ(faultPolicy(), FaultPolicy::stop);
    EXPECT_DEATH(fatalError("the key is missing"), "the key is missing \\(.*FaultTests\\.cpp:[0-9]+\\)");
    EXPECT_DEATH(entryPoint("track", [] { fatalError("no store", "Store.cpp", 12); }), "no store \\(Store\\.cpp:12\\)");
    EXPECT_DEATH(entryPoint("track", [] { throw std::bad_alloc(); }), "track: unexpected exception: .*bad_alloc");
}

TEST_F(ContainedFaults, LeaveTheEntryPointWithItsDefaultAndAreReportedOnce) {
    bool wentOn = false;
    entryPoint("track", [&] {
        fatalError("no store", "Store.cpp", 12);
        wentOn = true;
    });
    EXPECT_FALSE(wentOn);
    EXPECT_EQ(entryPoint(
                  "count", []() -> int { fatalError("no count"); }, -1),
              -1);
    EXPECT_EQ(entryPoint(
                  "count", [] { return 3; }, -1),
              3);

    ASSERT_EQ(handled.size(), 2U);
    EXPECT_EQ(handled[0].message, "no store");
    EXPECT_EQ(handled[0].file, "Store.cpp");
    EXPECT_EQ(handled[0].line, 12U);
    EXPECT_EQ(handled[0].entryPoint, "track");
    EXPECT_EQ(handled[1].entryPoint, "count");
    ASSERT_EQ(logged.size(), 2U);
    EXPECT_EQ(logged[0], "track: no store (Store.cpp:12)");
}

TEST_F(ContainedFaults, CountForeignExceptionsAsFaults) {
    entryPoint("completion", [] { throw std::bad_alloc(); });
    entryPoint("completion", [] { throw 42; });
    ASSERT_EQ(logged.size(), 2U);
    EXPECT_NE(logged[0].find("bad_alloc"), std::string::npos);
    EXPECT_NE(logged[1].find("unknown kind"), std::string::npos);
    EXPECT_EQ(handled.size(), 2U);
}

TEST_F(ContainedFaults, SurviveAHandlerAndALogThatThrow) {
    setFaultPolicy(FaultPolicy::contain, [](const Fault&) { throw 1; });
    entryPoint("track", [] { fatalError("no store"); });
    ASSERT_EQ(logged.size(), 2U);
    EXPECT_EQ(logged[1], "track: the host's fault handler threw");

    setFaultLog([](const std::string&) { throw 2; });
    EXPECT_EQ(entryPoint(
                  "count", []() -> int { fatalError("no count"); }, -1),
              -1);
}

TEST_F(ContainedFaults, DoNotRecurseThroughAHandlerThatMeetsTheSameFault) {
    int calls = 0;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault&) {
        ++calls;
        // Also shows that no lock is held: the setters would wait for it for ever.
        setFaultLog([this](const std::string& line) { logged.push_back(line); });
        entryPoint("track", [] { fatalError("again"); });
    });
    entryPoint("track", [] { fatalError("first"); });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(logged.size(), 2U);
    entryPoint("track", [] { fatalError("later"); });
    EXPECT_EQ(calls, 2);
}

} // namespace
