#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zentavo/platform/Preferences.h"

namespace zentavo {

/// A store that another process keeps busy: it answers each change from memory, and makes it again in `flush`.
class BusyPreferences final : public platform::Preferences,
                              public platform::PreferencesProvider,
                              public std::enable_shared_from_this<BusyPreferences> {
public:
    explicit BusyPreferences(std::shared_ptr<platform::Preferences> medium) : medium_(std::move(medium)) {}

    std::optional<Value> object(std::string_view key) const override { return medium_->object(key); }
    void set(std::string_view key, Value value) override { medium_->set(key, std::move(value)); }
    void remove(std::string_view key) override { medium_->remove(key); }
    void update(std::string_view key,
                const std::function<std::optional<Value>(const std::optional<Value>&)>& change) override {
        change(medium_->object(key));
        kept_.emplace_back(key, change);
    }
    void synchronise() override {}

    std::shared_ptr<platform::Preferences> standard() override { return suite({}); }
    std::shared_ptr<platform::Preferences> suite(std::string_view) override { return shared_from_this(); }

    void flush() {
        for (const auto& [key, change] : std::exchange(kept_, {})) {
            medium_->update(key, change);
        }
    }

private:
    const std::shared_ptr<platform::Preferences> medium_;
    std::vector<std::pair<std::string, std::function<std::optional<Value>(const std::optional<Value>&)>>> kept_;
};

} // namespace zentavo
