// Messages of a hostile server, parted by lines; one that begins with "b" is binary. What is read can be written and
// read again, and keeps to the limits.

#include <string>

#include "fuzz/Check.h"
#include "zentavo/socketio/Packet.h"
#include "zentavo/socketio/PacketDecoder.h"

using namespace zentavo::socketio;

namespace {

const Limits limits{4096, 2048, 3, 16, 500, 4096};

void roundTrip(const Packet& packet) {
    check(packet.attachments.size() <= limits.maximumAttachments, "attachments are bounded");
    std::size_t bytes = 0;
    for (const auto& attachment : packet.attachments) {
        bytes += attachment.size();
    }
    check(bytes <= limits.maximumPacket, "a packet is bounded");
    const auto frames = writePacket(packet, limits);
    check(frames.ok(), "what was read can be written");
    Limits roomy = limits;
    roomy.maximumPacket *= 8; // numbers may grow: 1e300
    PacketDecoder decoder(roomy);
    zentavo::Result<std::optional<Packet>> again = std::optional<Packet>();
    for (const auto& frame : *frames) {
        again = frame.binary ? decoder.takeBinary(frame.bytes) : decoder.takeText(frame.bytes.substr(1));
        check(again.ok(), "what was written can be read");
    }
    check(again->has_value(), "it is whole");
    check((*again)->type == packet.type && (*again)->space == packet.space && (*again)->id == packet.id &&
              (*again)->data == packet.data && (*again)->attachments == packet.attachments,
          "it is the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto rest = textOf(data, size);
    PacketDecoder decoder(limits);
    for (;;) {
        const auto end = rest.find('\n');
        const auto message = rest.substr(0, end);
        const auto packet =
            message.starts_with('b') ? decoder.takeBinary(message.substr(1)) : decoder.takeText(message);
        if (!packet) {
            break;
        }
        if (packet->has_value()) {
            roundTrip(**packet);
        }
        if (end == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(end + 1);
    }
    return 0;
}
