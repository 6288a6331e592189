#include "zentavo/socketio/AcknowledgeReceiver.h"

#include "zentavo/socketio/Namespace.h"

namespace zentavo::socketio {

Result<void> Acknowledge::Receiver::answer(Arguments arguments) {
    const auto space = space_.lock();
    if (!space) {
        return {}; // as for any connection that has ended
    }
    if (used_.exchange(true)) {
        return Error{"this event has been acknowledged already"};
    }
    auto answered = space->acknowledge(id_, session_, std::move(arguments));
    if (!answered) {
        used_ = false; // the server still waits, and the host may have something else to say, or say it later
    }
    return answered;
}

Emitted Acknowledge::operator()(Arguments arguments) const {
    return receiver_ ? receiver_->answer(std::move(arguments)) : Error{"this event wants no acknowledgement"};
}

} // namespace zentavo::socketio
