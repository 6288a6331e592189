#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <string>

namespace zentavo::desktop {

/// Which responses have come lately: one whose sender gave up waiting while the bus still kept it for us comes twice.
/// The bus's thread.
class RecentResponses {
public:
    /// False where it has come before.
    bool add(const std::string& id) {
        if (id.empty()) {
            return true;
        }
        if (std::find(ids_.begin(), ids_.end(), id) != ids_.end()) {
            return false;
        }
        ids_.push_back(id);
        if (ids_.size() > maximumCount) {
            ids_.pop_front();
        }
        return true;
    }

private:
    static constexpr std::size_t maximumCount = 32;
    std::deque<std::string> ids_; ///< oldest first
};

} // namespace zentavo::desktop
