#include <csignal>
#include <cstdio>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include "tests/e2e/Process.h"

namespace zentavo::devserver {
namespace {

using e2e::Process;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

constexpr std::chrono::seconds patience{20};

std::string urlOf(Process& process) {
    const std::string line = process.readLine(patience);
    EXPECT_THAT(line, MatchesRegex("zentavo-devserver listening on http://127.0.0.1:[0-9]+"));
    return line.substr(line.find("http"));
}

TEST(Program, SaysWhereItListensAndStopsWhenTold) {
    for (const int signal : {SIGTERM, SIGINT}) {
        Process process({ZENTAVO_DEVSERVER, "--port", "0", "--lifetime", "60"});
        httplib::Client client(urlOf(process));
        EXPECT_EQ(client.Get("/nowhere")->status, 404);
        EXPECT_THAT(process.readLine(patience), HasSubstr("#1  GET /nowhere  404"));
        process.kill(signal);
        EXPECT_EQ(process.wait(), 0);
    }
}

TEST(Program, StopsWhenItsTimeIsUp) {
    Process process({ZENTAVO_DEVSERVER, "--port=0", "--lifetime=0.1"});
    EXPECT_EQ(process.wait(), 0);
}

TEST(Program, StopsWhenTheParentClosesItsPipe) {
    FILE* pipe = popen(ZENTAVO_DEVSERVER " --port 0 --parent --lifetime 60 >/dev/null", "w");
    ASSERT_NE(pipe, nullptr);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, patience);
}

TEST(Program, WithoutADistributorItSaysSoAndGoesOn) {
    Process process(
        {ZENTAVO_DEVSERVER, "--port", "0", "--lifetime", "60", "--distributor", "--distributor-name", "none"});
    EXPECT_THAT(process.readLine(patience), HasSubstr("warning: no push distributor: "));
    httplib::Client client(urlOf(process));
    EXPECT_EQ(client.Get("/_dev/push/registrations")->status, 200);
}

TEST(Program, RefusesWhatItCannotDo) {
    Process exposed({ZENTAVO_DEVSERVER, "--host", "0.0.0.0", "--port", "0"});
    EXPECT_EQ(exposed.wait(), 2);
    EXPECT_THAT(exposed.readLine(patience), HasSubstr("--expose allows it"));
    Process mistaken({ZENTAVO_DEVSERVER, "--prot", "1"});
    EXPECT_EQ(mistaken.wait(), 2);

    Process first({ZENTAVO_DEVSERVER, "--port", "0", "--lifetime", "60"});
    const std::string url = urlOf(first);
    Process second({ZENTAVO_DEVSERVER, "--port", url.substr(url.rfind(':') + 1)});
    EXPECT_EQ(second.wait(), 2);
    EXPECT_THAT(second.readLine(patience), HasSubstr("cannot listen"));
}

} // namespace
} // namespace zentavo::devserver
