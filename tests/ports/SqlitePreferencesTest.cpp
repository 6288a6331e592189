// What the suites of SQLite do beyond the questions' promises: other processes, killed ones, full disks.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ports/linux/GenerationFile.h"
#include "ports/memory/SeededRandom.h"
#include "tests/ports/Child.h"
#include "tests/ports/SqlitePreferencesFixture.h"

namespace zentavo::tests {
namespace {

using linux_port::GenerationFile;

/// No file of this process grows beyond `bytes` while it lives: as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &before_); }

private:
    rlimit before_{};
};

TEST_F(SqlitePreferencesTest, ProcessesLoseNothingToEachOther) {
    constexpr int rounds = 1000;
    const std::string worker = ZENTAVO_PREFERENCES_WORKER;
    Child a({worker, "hammer", folder.path(), "a", std::to_string(rounds)});
    Child b({worker, "hammer", folder.path(), "b", std::to_string(rounds)});
    const auto suite = open();
    ASSERT_NE(suite, nullptr);
    double last = 0;
    for (int i = 0; i < 20'000; ++i) {
        const double counter = suite->number("counter");
        ASSERT_GE(counter, last);
        last = counter;
        if (const auto pair = suite->object("pair")) {
            const List& both = *pair->asList();
            ASSERT_EQ(static_cast<std::int64_t>(both[0].asString()->size()), both[1].exactInt64());
        }
    }
    EXPECT_EQ(a.wait(), 0);
    EXPECT_EQ(b.wait(), 0);
    EXPECT_EQ(suite->number("counter"), 2 * rounds);
    for (int i = rounds - 19; i <= rounds; ++i) {
        EXPECT_EQ(suite->number("a" + std::to_string(i % 20)), i);
        EXPECT_EQ(suite->number("b" + std::to_string(i % 20)), i);
    }
}

TEST_F(SqlitePreferencesTest, AKilledWriterLosesNothingThatItWasToldIsStored) {
    testing::SeededRandom random(7);
    const auto witness = open();
    for (int kill = 0; kill < 20; ++kill) {
        Child child({ZENTAVO_PREFERENCES_WORKER, "count", folder.path()});
        int acknowledged = 0;
        for (std::uint64_t left = 1 + random.below(300); left > 0; --left) {
            ASSERT_TRUE(child.read(acknowledged));
        }
        child.kill();
        while (child.read(acknowledged)) {
        }
        // A process that was there all the time and one that comes now; the last write may have been cut off after it
        // was stored.
        for (const auto& suite : {witness, open()}) {
            ASSERT_THAT(suite->number("n"), ::testing::AnyOf(acknowledged, acknowledged + 1));
        }
    }
    EXPECT_EQ(damagedFiles(), 0);
}

TEST_F(SqlitePreferencesTest, AWriterKilledBetweenCommitAndNewsHidesNothing) {
    const auto suite = open();
    suite->set("key", 1);
    const auto generation = GenerationFile::open(folder.path() / "shared.generation", true);
    Stranger stranger(file);
    // As a writer does, as far as it came.
    stranger.run("BEGIN IMMEDIATE; UPDATE preferences SET value = '2'");
    generation->begin();
    EXPECT_EQ(suite->number("key"), 1);
    EXPECT_EQ(suite->number("key"), 1);
    stranger.run("COMMIT");
    EXPECT_EQ(suite->number("key"), 2);
    EXPECT_EQ(generation->settled(), std::nullopt);
    // The next write settles it.
    open()->set("key", 3);
    EXPECT_NE(generation->settled(), std::nullopt);
    EXPECT_EQ(suite->number("key"), 3);
}

TEST_F(SqlitePreferencesTest, AGenerationFileOfAnyContentWillDo) {
    std::string content(4096, '\0');
    content.replace(8, 8, 8, '\xEE'); // done, far beyond begun
    folder.write("shared.generation", content);
    const auto suite = open();
    const auto other = open();
    for (int i = 0; i < 3; ++i) {
        suite->set("key", i);
        EXPECT_EQ(other->number("key"), i);
    }
    const auto generation = GenerationFile::open(folder.path() / "shared.generation", true);
    EXPECT_NE(generation->settled(), std::nullopt) << "reads come from memory again";
}

TEST_F(SqlitePreferencesTest, WhatIsPrintedWithoutAStandardOutputIsNotWrittenIntoTheStore) {
    std::fflush(stdout);
    const int output = dup(STDOUT_FILENO);
    close(STDOUT_FILENO);
    const auto generation = GenerationFile::open(folder.path() / "shared.generation", true);
    const bool isTaken = fcntl(STDOUT_FILENO, F_GETFD) != -1;
    dup2(output, STDOUT_FILENO);
    close(output);
    EXPECT_NE(generation, nullptr);
    EXPECT_FALSE(isTaken);
}

TEST_F(SqlitePreferencesTest, FilesAreTheOwnersAlone) {
    const std::filesystem::path below = folder.path() / "x/y";
    linux_port::SqlitePreferencesProvider(below, "standard", "", log, nullptr).suite("group.shop");
    for (const auto& made : {below, below.parent_path()}) {
        struct stat status {};
        ASSERT_EQ(::stat(made.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0700u);
    }
    EXPECT_TRUE(std::filesystem::exists(below / "group.shop.sqlite"));
}

TEST_F(SqlitePreferencesTest, APlaceThatCannotBeIsRefused) {
    linux_port::SqlitePreferencesProvider provider("/proc/self/nowhere", "standard", "", log, nullptr);
    EXPECT_EQ(provider.suite("shared"), nullptr);
    EXPECT_EQ(provider.suite(std::string(201, 'x')), nullptr);
    log->clear();
    provider.standard()->set("key", 1);
    provider.standard()->set("other", 2);
    EXPECT_EQ(provider.standard()->number("key"), 1);
    EXPECT_EQ(errors(), 1u) << "told once";
}

TEST_F(SqlitePreferencesTest, AFullDiskKeepsValuesInMemoryUntilItHasRoom) {
    const auto suite = open();
    suite->set("before", 1);
    {
        const FullDisk disk(32'768); // the log's index has this size already
        for (int i = 0; i < 20; ++i) {
            suite->set("key" + std::to_string(i), std::string(4000, 'x'));
        }
        suite->update("before", [](const auto& old) { return Value(old->exactInt64().value() + 1); });
        suite->remove("key0");
        EXPECT_EQ(suite->string("key19"), std::string(4000, 'x'));
        EXPECT_EQ(suite->object("key0"), std::nullopt);
        EXPECT_EQ(suite->number("before"), 2);
        EXPECT_EQ(errors(), 1u) << "told once";
    }
    EXPECT_EQ(open()->object("key19"), std::nullopt);
    suite->synchronise();
    const auto other = open();
    EXPECT_EQ(other->string("key19"), std::string(4000, 'x'));
    EXPECT_EQ(other->object("key0"), std::nullopt);
    EXPECT_EQ(other->number("before"), 2);
    EXPECT_EQ(errors(), 1u);
    EXPECT_EQ(damagedFiles(), 0);
}

TEST_F(SqlitePreferencesTest, ALockedDatabaseHoldsNobodyUpForLong) {
    const auto suite = open();
    suite->set("key", 1);
    {
        Stranger stranger(file);
        stranger.run("BEGIN IMMEDIATE");
        for (int i = 2; i < 500; ++i) {
            suite->set("key", i); // the first waits a quarter of a second, the others do not
        }
        suite->update("key", [](const auto&) { return Value(500); });
        EXPECT_EQ(suite->number("key"), 500);
        EXPECT_EQ(errors(), 1u) << "told once";
    }
    suite->set("other", 1);
    EXPECT_EQ(open()->number("key"), 500);
}

TEST_F(SqlitePreferencesTest, ASuiteThatIsBusyIsGivenOutAndOpenedLater) {
    using Clock = std::chrono::steady_clock;
    const auto increment = [](const std::optional<Value>& old) {
        return Value(old ? old->exactInt64().value() + 1 : 1);
    };
    const auto use = [&](platform::Preferences& suite) {
        const auto begun = Clock::now();
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(suite.object("key"), std::nullopt);
        }
        suite.set("other", 2);
        for (int i = 0; i < 20; ++i) {
            suite.update("counter", increment);
        }
        EXPECT_EQ(suite.number("counter"), 20);
        EXPECT_LT(Clock::now() - begun, std::chrono::seconds(5)) << "each call waits, a quarter of a second";
    };
    std::shared_ptr<platform::Preferences> suite;
    { // another first start is at making the files
        const auto generation = GenerationFile::open(folder.path() / "shared.generation", true);
        const GenerationFile::Lock lock(*generation, std::chrono::milliseconds(0));
        suite = open();
        ASSERT_NE(suite, nullptr);
        use(*suite);
        EXPECT_FALSE(std::filesystem::exists(file));
    }
    suite->synchronise();
    EXPECT_EQ(open()->number("other"), 2);
    EXPECT_EQ(open()->number("counter"), 20);
    suite->set("key", 1);
    suite->set("counter", 100);
    suite.reset();
    {
        Stranger stranger(file);
        stranger.run("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE; DELETE FROM preferences WHERE key = 'other'");
        suite = open();
        ASSERT_NE(suite, nullptr);
        use(*suite);
        stranger.run("COMMIT");
    }
    EXPECT_EQ(suite->number("key"), 1) << "reads come back by themselves";
    suite->synchronise();
    EXPECT_EQ(open()->number("counter"), 120) << "the updates are made on what was there all the time";
    EXPECT_EQ(open()->number("other"), 2);
    EXPECT_EQ(errors(), 2u) << "told once each time";
}

TEST_F(SqlitePreferencesTest, AStoreThatMayOnlyBeReadIsReadAndWritesWait) {
    namespace fs = std::filesystem;
    open()->set("key", 1);
    const auto allow = [&](fs::perms files, fs::perms folders) {
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            fs::permissions(entry.path(), files);
        }
        fs::permissions(folder.path(), folders);
    };
    const auto all = fs::perms(0666);
    allow(fs::perms(0444), fs::perms(0555));
    Child child({ZENTAVO_PREFERENCES_WORKER, "watch", folder.path()});
    int number = 0;
    ASSERT_TRUE(child.read(number)) << "it is neither refused nor does it crash: " << child.wait();
    EXPECT_EQ(number, 1);
    ASSERT_TRUE(child.read(number));
    EXPECT_EQ(number, 2) << "changed for the process itself";

    allow(all, fs::perms(0755)); // for a test that does not run as root
    const auto suite = open();
    EXPECT_EQ(suite->number("key"), 1);
    suite->set("key", 10);
    suite->set("foreign", 3);
    ASSERT_TRUE(child.read(number));
    EXPECT_EQ(number, 3);

    allow(all, fs::perms(0777));
    for (int i = 0; i < 5000 && suite->number("key") != 11; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(suite->number("key"), 11) << "stored once it can be, on what others have written meanwhile";
}

TEST_F(SqlitePreferencesTest, TheLogStaysBounded) {
    const auto suite = open();
    for (int i = 0; i < 3000; ++i) {
        suite->set("key" + std::to_string(i % 10), std::string(6000, static_cast<char>('a' + i % 26)));
    }
    EXPECT_LT(std::filesystem::file_size(file.string() + "-wal"), 6'000'000u);
    EXPECT_EQ(open()->string("key9"), std::string(6000, static_cast<char>('a' + 2999 % 26)));
}

TEST_F(SqlitePreferencesTest, TheMediumIsWaitedForInTheBackground) {
    std::vector<std::function<void()>> waiting;
    auto provider = std::make_shared<linux_port::SqlitePreferencesProvider>(
        folder.path(), "standard", "", log, [&](auto block) { waiting.push_back(std::move(block)); });
    auto suite = provider->suite("shared");
    suite->set("key", 1);
    EXPECT_EQ(waiting.size(), 0u);
    suite->synchronise();
    suite->synchronise();
    EXPECT_EQ(waiting.size(), 1u) << "one round serves both";
    waiting.front()();
    suite->synchronise();
    ASSERT_EQ(waiting.size(), 2u);
    suite.reset();
    provider.reset();
    waiting.back()(); // work that is left behind does no harm
}

} // namespace
} // namespace zentavo::tests
