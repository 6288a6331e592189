#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/SingleLine.h"
#include "zentavo/platform/Headers.h"
#include "zentavo/socketio/EngineHandshake.h"
#include "zentavo/socketio/EnginePacket.h"

namespace zentavo::socketio {

class Transport;

/// What a transport tells. It may be closed inside each call.
class TransportOwner {
public:
    virtual ~TransportOwner() = default;
    virtual void onTransportOpen(Transport& transport) = 0;
    virtual void onTransportHeaders(const std::vector<platform::Header>& headers) = 0;
    virtual void onTransportPacket(Transport& transport, const EnginePacket& packet) = 0;
    /// There is room again after `writable` was false.
    virtual void onTransportWritable(Transport& transport) = 0;
    /// After `pause`: nothing is on its way any more.
    virtual void onTransportPaused(Transport& transport) = 0;
    /// It is of no more use. An `error`, or else an end that the server chose.
    virtual void onTransportEnd(Transport& transport, bool error, const std::string& detail) = 0;
};

/// One way to carry packets; on the queue only. Held by shared_ptr; once closed it tells nothing.
class Transport {
public:
    virtual ~Transport() = default;
    virtual void open(const std::string& sid) = 0;
    virtual void setHandshake(const EngineHandshake& handshake) = 0;
    virtual bool writable() const = 0;
    /// What is sent now leaves at once, as far as this end can tell: hardly anything waits.
    virtual bool idle() const = 0;
    /// When writable: takes frames from the front, as many as it can.
    virtual void send(std::deque<EngineFrame>& frames) = 0;
    virtual void pause() = 0;
    virtual void resume() = 0;
    virtual void close() = 0;
};

/// Detail for people: one line of bounded length.
inline std::string shortened(std::string_view text) {
    constexpr std::size_t longest = 200;
    std::string line(text.substr(0, longest));
    makeSingleLine(line);
    return line;
}

} // namespace zentavo::socketio
