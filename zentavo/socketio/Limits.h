#pragma once

#include <cstddef>

namespace zentavo::socketio {

/// What is accepted from a server, and how much may wait to be sent to it. Bytes unless it says otherwise.
struct Limits {
    /// One WebSocket message, or the body of one polling answer.
    std::size_t maximumMessage = std::size_t{32} << 20U;
    /// One packet with all its attachments.
    std::size_t maximumPacket = std::size_t{32} << 20U;
    /// Attachments of a packet, both ways. Servers close the connection over more than they expect, and expect 10.
    std::size_t maximumAttachments = 10;
    /// Lists and maps inside each other.
    std::size_t maximumDepth = 64;
    /// Lists, maps and values of one packet in all.
    std::size_t maximumValues = 1'000'000;
    /// Events that come before the answer to a join, 512 bytes added to each. Of more all are dropped, and the connection
    /// does not count as recovered.
    std::size_t maximumEarly = std::size_t{8} << 20U;
    /// What may wait to be sent, of all namespaces; twice as much counts for an event that handlers of outgoing events
    /// will see. A larger packet is taken when nothing else waits.
    std::size_t maximumBuffered = std::size_t{64} << 20U;
};

} // namespace zentavo::socketio
