// The logs of the Linux port, seen from outside through the process's own streams.

#include <csignal>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "ports/linux/StdoutConsole.h"
#include "ports/linux/SyslogSystemLog.h"

namespace zentavo::tests {
namespace {

using ::testing::EndsWith;
using ::testing::internal::CaptureStderr;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStderr;
using ::testing::internal::GetCapturedStdout;

TEST(LogTest, AMessageIsOneBoundedLineAndNoFormat) {
    linux_port::SyslogSystemLog log("shop");
    CaptureStderr();
    log.write(platform::LogLevel::error, "100%s\nforged: entry\x1b[31m");
    const std::string line = GetCapturedStderr();
    EXPECT_THAT(line, EndsWith(": 100%s forged: entry [31m\n"));
    EXPECT_TRUE(line.starts_with("shop[")) << line;
    CaptureStderr();
    log.write(platform::LogLevel::info, std::string(1'000'000, 'x'));
    EXPECT_LT(GetCapturedStderr().size(), 5000u);
}

TEST(LogTest, LinesOfSeveralThreadsNeverMix) {
    CaptureStdout();
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([letter] {
            linux_port::StdoutConsole console;
            for (int i = 0; i < 200; ++i) {
                console.writeLine(std::string(100, letter));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::istringstream lines(GetCapturedStdout());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_EQ(line, std::string(100, line.empty() ? '?' : line.front()));
    }
    EXPECT_EQ(count, 4 * 200);
}

// As of "app | head" once head has seen enough.
TEST(LogTest, AReaderThatIsGoneDoesNotEndTheHost) {
    std::fflush(nullptr);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    const int streams[] = {dup(STDOUT_FILENO), dup(STDERR_FILENO)};
    dup2(ends[1], STDOUT_FILENO);
    dup2(ends[1], STDERR_FILENO);
    linux_port::StdoutConsole().writeLine("nobody reads this");
    linux_port::SyslogSystemLog("shop").write(platform::LogLevel::error, "nor this");
    dup2(streams[0], STDOUT_FILENO);
    dup2(streams[1], STDERR_FILENO);
    std::clearerr(stdout);
    for (const int file : {ends[1], streams[0], streams[1]}) {
        close(file);
    }

    // What the host has its signals do is as it was.
    sigset_t blocked{};
    sigset_t waiting{};
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    sigpending(&waiting);
    EXPECT_EQ(sigismember(&blocked, SIGPIPE), 0);
    EXPECT_EQ(sigismember(&waiting, SIGPIPE), 0);
}

} // namespace
} // namespace zentavo::tests
