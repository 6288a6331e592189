// How a process that uses the platform ends, and what it survives, proved with real processes.

#include <chrono>
#include <cstdlib>
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <spawn.h>
#include <sys/wait.h>

#include "tests/support/LoopbackServer.h"

extern char** environ; // NOLINT: POSIX has no header for it

namespace zentavo::tests {
namespace {

using namespace std::chrono_literals;

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr auto sanitizing = 3000ms; // their own work at exit
#else
constexpr auto sanitizing = 0ms;
#endif

class ExitTest : public ::testing::Test {
protected:
    struct Ending {
        int code = -1; ///< 128 + signal for a crash
        std::chrono::milliseconds took{};
    };

    Ending run(const std::string& scenario, std::uint16_t port) {
        std::string program = EXIT_CHILD;
        std::string name = scenario;
        std::string number = std::to_string(port);
        char* arguments[] = {program.data(), name.data(), number.data(), nullptr};
        const auto begun = std::chrono::steady_clock::now();
        pid_t process = 0;
        if (posix_spawn(&process, program.c_str(), nullptr, nullptr, arguments, environ) != 0) {
            return {};
        }
        int status = 0;
        waitpid(process, &status, 0);
        const auto took = std::chrono::steady_clock::now() - begun;
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                std::chrono::duration_cast<std::chrono::milliseconds>(took)};
    }
    Ending run(const std::string& scenario) { return run(scenario, server.port()); }
    /// The quickest of some runs: the machine's own delays come and go, what a process waits for is there each time.
    Ending runWithin(std::chrono::milliseconds limit, const std::string& scenario, std::uint16_t port) {
        limit += sanitizing;
        Ending ending = run(scenario, port);
        for (int i = 0; i < 4 && ending.took >= limit; ++i) {
            ending = run(scenario, port);
        }
        EXPECT_LT(ending.took, limit);
        return ending;
    }
    Ending runWithin(std::chrono::milliseconds limit, const std::string& scenario) {
        return runWithin(limit, scenario, server.port());
    }

    std::set<std::string> targets() {
        std::set<std::string> result;
        for (const auto& request : server.requests()) {
            result.insert(request.target);
        }
        return result;
    }

    LoopbackServer server{[](const LoopbackServer::Request& request, LoopbackServer::Reply& reply) {
        if (request.target == "/hang") {
            reply.hang();
        } else {
            reply.answer(200, "{}");
        }
    }};
};

TEST_F(ExitTest, WhatWasHandedOverReachesALiveServer) {
    const auto ending = runWithin(900ms, "burst"); // nobody waits longer than the requests take
    EXPECT_EQ(ending.code, 0);
    EXPECT_EQ(targets().size(), 300U);
}

TEST_F(ExitTest, AServerThatHangsCostsLessThanASecond) {
    const auto ending = runWithin(1200ms, "hang");
    EXPECT_EQ(ending.code, 0);
    EXPECT_GE(ending.took, 800ms) << "the requests were given their time";
}

TEST_F(ExitTest, NobodyWaitsForWhatHasFailed) { EXPECT_EQ(runWithin(700ms, "refused", closedPort()).code, 0); }

#ifndef __SANITIZE_ADDRESS__ // whose checks of types need file descriptors, too
TEST_F(ExitTest, AShortageThatPassesCostsOnlyWhatWasSentInIt) {
    EXPECT_EQ(run("shortage").code, 0);
    EXPECT_EQ(targets(), std::set<std::string>{"/2"});
}
#endif

TEST_F(ExitTest, ABlockMayExitTheProcess) {
    EXPECT_EQ(runWithin(1200ms, "completion").code, 7);
    EXPECT_EQ(targets().count("/1"), 1U);
}

TEST_F(ExitTest, ABlockThatDoesNotEndHoldsNobodyUp) { EXPECT_EQ(runWithin(700ms, "busy").code, 0); }

TEST_F(ExitTest, AThreadThatCannotEndCostsNoSecondSecond) {
    const auto ending = runWithin(1300ms, "stuck");
    EXPECT_EQ(ending.code, 0);
    EXPECT_GE(ending.took, 900ms);
}

TEST_F(ExitTest, LateCallersFindLiveObjectsThatDoNothing) {
    EXPECT_EQ(runWithin(700ms, "late").code, 0);
    EXPECT_EQ(targets(), std::set<std::string>{"/1"});
    EXPECT_EQ(runWithin(800ms, "threads").code, 0) << "what comes later is not waited for";
}

TEST_F(ExitTest, AForkedChildLeavesThreadsAndRequestsToItsParent) {
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // in the child nothing refers to what the threads' stacks did
    EXPECT_EQ(runWithin(700ms, "fork").code, 0) << "the child waits for nothing";
    EXPECT_EQ(targets(), (std::set<std::string>{"/1", "/2"}));
}

} // namespace
} // namespace zentavo::tests
