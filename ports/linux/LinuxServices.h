#pragma once

#include <memory>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Clock.h"
#include "zentavo/platform/MainQueue.h"
#include "zentavo/platform/Random.h"
#include "zentavo/platform/URLSession.h"

namespace zentavo::linux_port {

/// What Linux answers to programs without the SDK, such as a client of a Socket.IO server, and to the SDK as well. All
/// of a process share one worker and one network thread, which start when they are first needed.
struct LinuxServices {
    /// Runs blocks one after the other, on a thread that serves nothing but the SDK and these services.
    std::shared_ptr<platform::MainQueue> worker;
    std::shared_ptr<platform::Clock> clock;
    std::shared_ptr<platform::Random> random;
    std::shared_ptr<platform::URLSession> urlSession;
};

/// Starts no thread and opens no file.
ZENTAVO_EXPORT LinuxServices makeLinuxServices();

} // namespace zentavo::linux_port
