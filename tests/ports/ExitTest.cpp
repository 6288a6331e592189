// How a process that uses the platform ends, proved with real processes.

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
    const auto ending = run("burst");
    EXPECT_EQ(ending.code, 0);
    EXPECT_EQ(targets().size(), 300U);
    EXPECT_LT(ending.took, 900ms + sanitizing) << "nobody waits longer than the requests take";
}

TEST_F(ExitTest, AServerThatHangsCostsLessThanASecond) {
    const auto ending = run("hang");
    EXPECT_EQ(ending.code, 0);
    EXPECT_GE(ending.took, 800ms) << "the requests were given their time";
    EXPECT_LT(ending.took, 1200ms + sanitizing);
}

TEST_F(ExitTest, NobodyWaitsForWhatHasFailed) {
    const auto ending = run("refused", closedPort());
    EXPECT_EQ(ending.code, 0);
    EXPECT_LT(ending.took, 700ms + sanitizing);
}

TEST_F(ExitTest, ABlockMayExitTheProcess) {
    const auto ending = run("completion");
    EXPECT_EQ(ending.code, 7);
    EXPECT_LT(ending.took, 1200ms + sanitizing);
    EXPECT_EQ(targets().count("/1"), 1U);
}

TEST_F(ExitTest, ABlockThatDoesNotEndHoldsNobodyUp) {
    const auto ending = run("busy");
    EXPECT_EQ(ending.code, 0);
    EXPECT_LT(ending.took, 700ms + sanitizing);
}

TEST_F(ExitTest, AThreadThatCannotEndCostsNoSecondSecond) {
    const auto ending = run("stuck");
    EXPECT_EQ(ending.code, 0);
    EXPECT_GE(ending.took, 900ms);
    EXPECT_LT(ending.took, 1300ms + sanitizing);
}

TEST_F(ExitTest, LateCallersFindLiveObjectsThatDoNothing) {
    const auto late = run("late");
    EXPECT_EQ(late.code, 0);
    EXPECT_LT(late.took, 700ms + sanitizing);
    EXPECT_EQ(targets(), std::set<std::string>{"/1"});

    const auto threads = run("threads");
    EXPECT_EQ(threads.code, 0);
    EXPECT_LT(threads.took, 800ms + sanitizing) << "what comes later is not waited for";
}

TEST_F(ExitTest, AForkedChildLeavesThreadsAndRequestsToItsParent) {
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // in the child nothing refers to what the threads' stacks did
    const auto ending = run("fork");
    EXPECT_EQ(ending.code, 0);
    EXPECT_LT(ending.took, 700ms + sanitizing) << "the child waits for nothing";
    EXPECT_EQ(targets(), (std::set<std::string>{"/1", "/2"}));
}

} // namespace
} // namespace zentavo::tests
