#pragma once

#include <memory>
#include <string>

#include "ports/desktop/SessionBus.h"
#include "tests/desktop/Awaited.h"

namespace zentavo::tests {

/// Has the name on the bus when it returns: what comes over the bus after that finds its owner.
inline void takeName(desktop::SessionBus& bus, const std::string& name) {
    const auto owned = std::make_shared<Awaited<bool>>();
    bus.own(name, [owned](bool ours) { owned->put(ours); });
    EXPECT_TRUE(owned->next()) << name << " is another's";
}

} // namespace zentavo::tests
