#pragma once

#include <map>
#include <set>

#include "ports/memory/MemoryPreferences.h"

namespace zentavo::testing {

/// Opens suites that live in memory. Any thread.
class ZENTAVO_EXPORT MemoryPreferencesProvider final : public platform::PreferencesProvider {
public:
    /// `ownIdentifier` is the main bundle's, whose suite is refused; the standard suite is told apart by it too. With
    /// no `store` the provider has one of its own; a given one is shared, as files are between processes.
    explicit MemoryPreferencesProvider(std::string ownIdentifier = {},
                                       std::shared_ptr<platform::SystemLog> log = nullptr,
                                       std::shared_ptr<MemoryStore> store = nullptr);

    std::shared_ptr<platform::Preferences> standard() override;
    std::shared_ptr<platform::Preferences> suite(std::string_view name) override;

    /// From now on `suite(name)` answers null, as where no place for it can be made.
    void refuse(std::string name);
    /// From now on every `suite` is refused.
    void refuseAll();

    /// The suite as this port's own type, to look at what it holds. `name` is not checked; empty names the standard
    /// one.
    std::shared_ptr<MemoryPreferences> opened(const std::string& name = {});
    /// How often `synchronise` was called on any suite of this provider.
    int synchroniseCount() const;

private:
    const std::string ownIdentifier_;
    const std::shared_ptr<platform::SystemLog> log_;
    const std::shared_ptr<MemoryStore> store_;
    mutable Mutex mutex_;
    std::map<std::string, std::shared_ptr<MemoryPreferences>> opened_ ZENTAVO_GUARDED_BY(mutex_);
    std::set<std::string, std::less<>> refused_ ZENTAVO_GUARDED_BY(mutex_);
    bool refusesAll_ ZENTAVO_GUARDED_BY(mutex_) = false;
};

} // namespace zentavo::testing
