#pragma once

#include <cstddef>
#include <vector>

#include "zentavo/socketio/Limits.h"
#include "zentavo/socketio/Packet.h"

namespace zentavo::socketio {

/// Events that come before the answer to a join: a server that recovers a connection sends what was missed first. They
/// are bounded, and kept all or not at all, since a gap in the middle is what nobody would notice. On the queue only.
class EarlyEvents {
public:
    explicit EarlyEvents(const Limits& limits) : maximum_(limits.maximumEarly) {}

    void keep(Packet packet);
    /// False when there were too many.
    bool complete() const noexcept { return complete_; }
    /// Leaves nothing behind, for the next join.
    std::vector<Packet> take();

private:
    const std::size_t maximum_;
    std::size_t bytes_ = 0;
    bool complete_ = true;
    std::vector<Packet> packets_;
};

} // namespace zentavo::socketio
