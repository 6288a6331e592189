// Suites whose files are not what we wrote: damaged, foreign, or a later version's.

#include <fstream>

#include <gmock/gmock.h>

#include "tests/ports/SqlitePreferencesFixture.h"

namespace zentavo::tests {
namespace {

using ::testing::Optional;

class SqliteDamageTest : public SqlitePreferencesTest {
protected:
    /// Overwrites the page in which the rows are.
    void damageRows() const {
        std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(4096);
        stream << std::string(4096, '\xA5');
    }
};

TEST_F(SqliteDamageTest, ADamagedFileIsMovedAside) {
    // More often than files are kept.
    for (int i = 0; i < 5; ++i) {
        folder.write("shared.sqlite", "no database at all, " + std::string(10'000, 'x'));
        std::filesystem::remove(file.string() + "-wal"); // which by itself would be enough to go on
        log->clear();
        const auto suite = open();
        ASSERT_NE(suite, nullptr);
        EXPECT_EQ(errors(), 1u);
        EXPECT_EQ(suite->object("key"), std::nullopt);
        suite->set("key", i);
        EXPECT_EQ(open()->number("key"), i);
    }
    EXPECT_EQ(damagedFiles(), 3);
}

TEST_F(SqliteDamageTest, DamageThatShowsLaterCostsOnlyWhatNobodyKnows) {
    const auto suite = open();
    suite->set("known", 1);
    Stranger(file).run("PRAGMA wal_checkpoint(TRUNCATE); INSERT INTO preferences VALUES ('unknown', '1');"
                       "PRAGMA wal_checkpoint(TRUNCATE)");
    damageRows();
    suite->set("new", 2);
    EXPECT_EQ(damagedFiles(), 1);
    const auto reader = open();
    for (const auto& one : {suite, reader}) {
        EXPECT_EQ(one->number("known"), 1);
        EXPECT_EQ(one->number("new"), 2);
        EXPECT_EQ(one->object("unknown"), std::nullopt);
    }
    // The same found by another process. This one still has the damaged page in memory and would not find out.
    Stranger(file).run("PRAGMA wal_checkpoint(TRUNCATE)");
    EXPECT_EQ(suite->object("never asked for"), std::nullopt);
    damageRows();
    const auto finder = open();
    EXPECT_EQ(finder->object("known"), std::nullopt);
    EXPECT_EQ(damagedFiles(), 2);
    finder->set("known", 4);
    EXPECT_EQ(suite->number("known"), 4);
    suite->set("known", 5);
    EXPECT_EQ(finder->number("known"), 5);
    EXPECT_EQ(damagedFiles(), 2);
}

TEST_F(SqliteDamageTest, ALaterVersionsFileIsLeftAlone) {
    Stranger(file).run("CREATE TABLE later (x); PRAGMA user_version = 2");
    const auto bytes = [&] {
        std::ifstream stream(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    };
    const std::string before = bytes();
    EXPECT_EQ(open(), nullptr);
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(damagedFiles(), 0);
}

TEST_F(SqliteDamageTest, ForeignTablesAndRowsDoNoHarm) {
    open()->set("good", 1);
    Stranger(file).run("INSERT INTO preferences VALUES ('text', 'no JSON'), ('blob', x'00FF'), ('null', 'null'),"
                       "('huge', '\"' || hex(zeroblob(1000000)) || '\"'), ('giant', zeroblob(9000000));"
                       "CREATE TRIGGER t AFTER UPDATE ON preferences BEGIN DELETE FROM preferences; END");
    const auto suite = open();
    for (const char* key : {"text", "blob", "null", "huge", "giant"}) {
        EXPECT_EQ(suite->object(key), std::nullopt) << key;
        suite->set(key, "mended");
        EXPECT_THAT(open()->string(key), Optional(std::string("mended")));
    }
    EXPECT_EQ(suite->number("good"), 1);

    Stranger(file).run("DROP TABLE preferences; CREATE TABLE preferences (only INTEGER)");
    EXPECT_EQ(open()->object("good"), std::nullopt);
    EXPECT_EQ(damagedFiles(), 1);
}

} // namespace
} // namespace zentavo::tests
