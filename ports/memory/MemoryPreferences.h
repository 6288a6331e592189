#pragma once

#include <atomic>

#include "ports/memory/MemoryStore.h"
#include "zentavo/platform/Preferences.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo::testing {

/// Preferences that last as long as their `MemoryStore`.
class ZENTAVO_EXPORT MemoryPreferences final : public platform::Preferences {
public:
    /// `log` is told of refused values; it may be null.
    MemoryPreferences(std::shared_ptr<MemoryStore::Suite> suite, std::shared_ptr<platform::SystemLog> log);

    std::optional<Value> object(std::string_view key) const override;
    std::optional<std::uint64_t> version() const override;
    void set(std::string_view key, Value value) override;
    void remove(std::string_view key) override;
    /// Calls `change` once, under the suite's lock.
    void update(std::string_view key,
                const std::function<std::optional<Value>(const std::optional<Value>&)>& change) override;
    void synchronise() override { ++synchroniseCount_; }

    /// Everything that is stored, for assertions.
    Map contents() const;
    /// How often `synchronise` was called on this object.
    int synchroniseCount() const { return synchroniseCount_; }

private:
    bool acceptable(std::string_view key, const Value& value) const;

    const std::shared_ptr<MemoryStore::Suite> suite_;
    const std::shared_ptr<platform::SystemLog> log_;
    std::atomic<int> synchroniseCount_ = 0;
};

} // namespace zentavo::testing
