#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "ports/linux/SuiteCache.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Preferences.h"

namespace zentavo::linux_port {

/// Runs a block later, off the calling thread; blocks may run one by one.
using Background = std::function<void(std::function<void()>)>;

/// A suite in SQLite with its values in memory. One lock guards it; it is held for microseconds, and for up to a quarter
/// of a second where another process keeps the database locked.
class SqlitePreferences final : public platform::Preferences, public std::enable_shared_from_this<SqlitePreferences> {
public:
    /// Opens nothing yet. Without a `background` its work is done in the calling thread.
    SqlitePreferences(const std::filesystem::path& folder, const std::string& fileName,
                      std::shared_ptr<platform::SystemLog> log, Background background);

    /// False when there is no place for the files. Whenever they are out of reach the suite lives in memory, and tries
    /// again with each access.
    bool open();

    std::optional<Value> object(std::string_view key) const override;
    std::optional<std::uint64_t> version() const override;
    void set(std::string_view key, Value value) override;
    void remove(std::string_view key) override;
    void update(std::string_view key,
                const std::function<std::optional<Value>(const std::optional<Value>&)>& change) override;
    void synchronise() override;

private:
    template <class Body>
    auto locked(Body body) const;
    void store(std::string_view key, std::optional<Value> value, const std::optional<std::string>& text);

    const std::shared_ptr<platform::SystemLog> log_;
    const Background background_;
    /// The files' work that is handed over and has not begun yet serves later callers too.
    std::atomic<bool> isWorkWaiting_ = false;

    mutable Mutex mutex_;
    mutable SuiteCache cache_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::linux_port
