#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/platform/Preferences.h"

namespace zentavo::desktop {

/// Which pushes have come lately, so that one that is delivered again is not shown again, by this process or the next.
/// One thread at a time.
class RecentMessages {
public:
    /// Of more, the oldest are forgotten.
    static constexpr std::size_t maximumCount = 100;
    /// What is longer is no identifier that we remember.
    static constexpr std::size_t maximumIdBytes = 128;

    explicit RecentMessages(std::shared_ptr<platform::Preferences> suite);

    bool contains(std::string_view id) const;
    void add(const std::string& id);

private:
    const std::shared_ptr<platform::Preferences> suite_;
    std::vector<std::string> ids_; ///< oldest first
};

} // namespace zentavo::desktop
