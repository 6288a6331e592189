#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Preferences.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo::linux_port {

class SqlitePreferences;

/// Suites as SQLite files in one folder, which is made with mode 0700 when the first suite is opened. An open suite stays
/// open as long as the provider or anybody who uses it lives. Any thread.
///
/// A suite's file has its name; what is no letter, digit, "_", "-" or inner "." is written as %XX. A name whose file
/// name would be longer than 200 bytes is refused.
///
/// Refused is also a suite whose files can neither be made nor opened, and one that a later version of the SDK made: its
/// rows may mean something else by then, and the standard suite remembers across starts where memory would not. One that
/// another process keeps locked is given out and opened later, and one that may only be read is read.
class ZENTAVO_EXPORT SqlitePreferencesProvider final : public platform::PreferencesProvider {
public:
    /// `standardName` names the standard suite, and `ownIdentifier` the main bundle; the latter may be empty.
    /// `background` runs a block later off the calling thread, which is where the medium is waited for; without it such
    /// work is done by the caller.
    SqlitePreferencesProvider(std::filesystem::path folder, std::string standardName, std::string ownIdentifier,
                              std::shared_ptr<platform::SystemLog> log,
                              std::function<void(std::function<void()>)> background);
    ~SqlitePreferencesProvider() override;

    std::shared_ptr<platform::Preferences> standard() override;
    std::shared_ptr<platform::Preferences> suite(std::string_view name) override;

private:
    std::shared_ptr<SqlitePreferences> find(const std::string& fileName, bool alsoWithoutPlace);

    const std::filesystem::path folder_;
    const std::string standardName_;
    const std::string ownIdentifier_;
    const std::shared_ptr<platform::SystemLog> log_;
    const std::function<void(std::function<void()>)> background_;
    Mutex mutex_;
    std::map<std::string, std::shared_ptr<SqlitePreferences>> suites_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::linux_port
