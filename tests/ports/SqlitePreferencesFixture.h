#pragma once

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "ports/linux/SqlitePreferencesProvider.h"
#include "ports/memory/RecordingSystemLog.h"
#include "tests/ports/TemporaryFolder.h"

namespace zentavo::tests {

/// A connection that knows nothing of the SDK.
class Stranger {
public:
    explicit Stranger(const std::filesystem::path& file) { sqlite3_open(file.c_str(), &database_); }
    ~Stranger() { sqlite3_close(database_); }
    Stranger(const Stranger&) = delete;
    Stranger& operator=(const Stranger&) = delete;

    void run(const std::string& sql) {
        ASSERT_EQ(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database_);
    }

private:
    sqlite3* database_ = nullptr;
};

class SqlitePreferencesTest : public ::testing::Test {
protected:
    std::shared_ptr<platform::PreferencesProvider> process() {
        return std::make_shared<linux_port::SqlitePreferencesProvider>(folder.path(), "standard", "", log, nullptr);
    }
    std::shared_ptr<platform::Preferences> open() { return process()->suite("shared"); }
    std::size_t errors() const {
        const auto entries = log->entries();
        return static_cast<std::size_t>(std::count_if(entries.begin(), entries.end(), [](const auto& entry) {
            return entry.level == platform::LogLevel::error;
        }));
    }
    int damagedFiles() const {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            count += entry.path().filename().string().starts_with("shared.damaged-") ? 1 : 0;
        }
        return count;
    }
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "shared.sqlite";
    const std::shared_ptr<testing::RecordingSystemLog> log = std::make_shared<testing::RecordingSystemLog>();
};

} // namespace zentavo::tests
