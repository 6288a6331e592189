#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "zentavo/platform/Preferences.h"

namespace zentavo::desktop {

/// Pushes that have arrived and are not shown yet. Whoever brought one will not bring it again, so the process that comes
/// after one that was killed takes it from here. Any thread.
class PushJournal {
public:
    /// Of more, the oldest are no longer kept; they are shown all the same unless the process is killed.
    static constexpr std::size_t maximumCount = 50;
    /// A push that was under way when so many processes ended is given up: it may be what ended them.
    static constexpr std::int64_t maximumAttempts = 3;

    struct Entry {
        std::string identifier; ///< ours
        std::string body;
    };

    explicit PushJournal(std::shared_ptr<platform::Preferences> suite) : suite_(std::move(suite)) {}

    /// Kept when this returns.
    void add(const std::string& identifier, const std::string& body) const;
    /// It is shown, or never will be.
    void remove(const std::string& identifier) const;
    /// What an earlier process left: all but `known`, oldest first, which counts as one more attempt. `givenUp` are those
    /// that have had enough of them, and are no longer kept.
    struct Left {
        std::vector<Entry> entries;
        std::size_t givenUp = 0;
    };
    Left takeUp(const std::set<std::string>& known) const;

private:
    const std::shared_ptr<platform::Preferences> suite_;
};

} // namespace zentavo::desktop
