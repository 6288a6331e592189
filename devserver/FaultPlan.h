#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string_view>

#include "devserver/ScriptedFault.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::devserver {

/// The faults still to come. They are used up in the order in which they were planned, each as often as it says; a
/// request gets the first one that matches it. For any thread.
class FaultPlan {
public:
    static constexpr std::size_t maximum = 1'000;

    /// False when the plan is full.
    bool add(ScriptedFault fault);
    std::optional<ScriptedFault> take(Twin twin, std::string_view servicePath);
    void clear();
    std::size_t size() const;
    /// A map for each fault: "path", "fault" (its description) and "times" left.
    List list() const;

private:
    mutable Mutex mutex_;
    std::deque<ScriptedFault> faults_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::devserver
