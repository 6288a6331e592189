// A polling body, the text of a WebSocket message and a handshake as a hostile server could send them.

#include <string>
#include <vector>

#include "fuzz/Check.h"
#include "zentavo/socketio/EngineHandshake.h"
#include "zentavo/socketio/EnginePacket.h"

using namespace zentavo::socketio;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = textOf(data, size);
    PayloadReader reader(text);
    std::vector<EngineFrame> frames;
    bool whole = false;
    for (;;) {
        const auto packet = reader.next();
        if (!packet || !packet->has_value()) {
            whole = packet.ok();
            break;
        }
        const EnginePacket& read = **packet;
        frames.push_back(read.binary ? EngineFrame{std::string(read.data), true} : engineFrame(read.type, read.data));
    }
    check(!whole || !frames.empty(), "a body has a packet or is refused");
    std::string again;
    for (const auto& frame : frames) {
        const auto before = again.size();
        appendToPayload(again, frame);
        check(again.size() == before + sizeInPayload(frame) + (before > 0 ? 1 : 0), "the size is known before");
    }
    check(!whole || again.size() == size, "what was read is written again in as many bytes");
    if (const auto packet = readEnginePacket(text); packet && packet->type == EnginePacketType::open) {
        if (const auto handshake = readEngineHandshake(packet->data)) {
            check(!handshake->sid.empty() && handshake->pingInterval.count() > 0, "a handshake has an id and times");
        }
    }
    return 0;
}
