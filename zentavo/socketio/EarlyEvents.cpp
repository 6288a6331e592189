#include "zentavo/socketio/EarlyEvents.h"

#include <utility>

namespace zentavo::socketio {

namespace {
/// What a kept event costs besides its bytes, so that empty ones do not pile up for nothing.
constexpr std::size_t overhead = 512;
} // namespace

void EarlyEvents::keep(Packet packet) {
    bytes_ += packet.bytes + overhead;
    if (bytes_ > maximum_) {
        complete_ = false;
        packets_ = {};
    }
    if (complete_) {
        packets_.push_back(std::move(packet));
    }
}

std::vector<Packet> EarlyEvents::take() {
    bytes_ = 0;
    complete_ = true;
    return std::exchange(packets_, {});
}

} // namespace zentavo::socketio
