#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ports/desktop/SessionBus.h"

namespace zentavo::desktop {

/// The number on the app's icon in the desktop's launcher or dock. Any thread.
class LauncherBadge {
public:
    LauncherBadge(std::shared_ptr<SessionBus> bus, const std::string& desktopEntry);

    /// 0 and less take it away. Where no launcher listens, nothing happens.
    void set(std::int64_t count) const;

private:
    const std::shared_ptr<SessionBus> bus_;
    const std::string uri_;
};

} // namespace zentavo::desktop
