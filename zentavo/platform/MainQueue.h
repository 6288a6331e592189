#pragma once

#include "zentavo/platform/DispatchQueue.h"

namespace zentavo::platform {

/// The serial queue on which views live and host callbacks about them arrive. With a user interface attached it is the
/// toolkit's main thread; without one it is a serial queue of the port's worker, since there is nothing to protect.
class ZENTAVO_EXPORT MainQueue : public DispatchQueue {
public:
    /// True on the thread that runs this queue's blocks.
    virtual bool isCurrent() const = 0;
};

} // namespace zentavo::platform
