#include "devserver/FaultPlan.h"

#include <algorithm>
#include <utility>

namespace zentavo::devserver {

bool FaultPlan::add(ScriptedFault fault) {
    MutexLock lock(mutex_);
    if (faults_.size() >= maximum) {
        return false;
    }
    faults_.push_back(std::move(fault));
    return true;
}

std::optional<ScriptedFault> FaultPlan::take(Twin twin, std::string_view servicePath) {
    MutexLock lock(mutex_);
    const auto found =
        std::ranges::find_if(faults_, [&](const ScriptedFault& fault) { return fault.matches(twin, servicePath); });
    if (found == faults_.end()) {
        return std::nullopt;
    }
    ScriptedFault fault = *found;
    if (--found->times == 0) {
        faults_.erase(found);
    }
    return fault;
}

void FaultPlan::clear() {
    MutexLock lock(mutex_);
    faults_.clear();
}

std::size_t FaultPlan::size() const {
    MutexLock lock(mutex_);
    return faults_.size();
}

List FaultPlan::list() const {
    MutexLock lock(mutex_);
    List list;
    for (const ScriptedFault& fault : faults_) {
        list.push_back(Map{{"path", fault.path}, {"fault", fault.description()}, {"times", fault.times}});
    }
    return list;
}

} // namespace zentavo::devserver
