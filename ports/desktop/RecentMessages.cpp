#include "ports/desktop/RecentMessages.h"

#include <algorithm>
#include <utility>

namespace zentavo::desktop {

namespace {
constexpr const char* key = "ZentavoPushRecent";
} // namespace

RecentMessages::RecentMessages(std::shared_ptr<platform::Preferences> suite) : suite_(std::move(suite)) {
    const auto stored = suite_->object(key);
    const List* ids = stored ? stored->asList() : nullptr;
    if (ids == nullptr || ids->size() > maximumCount) {
        return;
    }
    for (const Value& each : *ids) {
        if (const std::string* id = each.asString()) {
            ids_.push_back(*id);
        }
    }
}

bool RecentMessages::contains(std::string_view id) const {
    return std::find(ids_.begin(), ids_.end(), id) != ids_.end();
}

void RecentMessages::add(const std::string& id) {
    if (id.empty() || id.size() > maximumIdBytes || contains(id)) {
        return;
    }
    if (ids_.size() == maximumCount) {
        ids_.erase(ids_.begin());
    }
    ids_.push_back(id);
    suite_->set(key, List(ids_.begin(), ids_.end()));
}

} // namespace zentavo::desktop
