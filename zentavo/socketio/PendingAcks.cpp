#include "zentavo/socketio/PendingAcks.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "zentavo/foundation/Fault.h"

namespace zentavo::socketio {

void PendingAcks::add(std::uint64_t id, AckHandler handler, std::chrono::milliseconds timeout,
                      std::function<void()> onTimeout) {
    Waiting waiting{std::move(handler)};
    if (timeout.count() > 0) {
        waiting.timer = queue_->after(timeout, std::move(onTimeout));
    }
    waiting_.emplace(id, std::move(waiting));
}

void PendingAcks::sent(std::uint64_t id) {
    const auto waiting = waiting_.find(id);
    if (waiting != waiting_.end()) {
        waiting->second.sent = true;
    }
}

void PendingAcks::settle(std::uint64_t id, const Result<Arguments, AckFailure>& result) {
    auto waiting = waiting_.extract(id);
    if (waiting.empty()) {
        return; // too late, or never asked for
    }
    if (waiting.mapped().timer != 0) {
        queue_->cancel(waiting.mapped().timer);
    }
    if (!silent_) {
        entryPoint("Socket.IO acknowledgement", [&] { waiting.mapped().handler(result); });
    }
}

void PendingAcks::failSent() {
    std::vector<std::uint64_t> sent;
    for (const auto& [id, waiting] : waiting_) {
        if (waiting.sent) {
            sent.push_back(id);
        }
    }
    std::sort(sent.begin(), sent.end());
    for (const auto id : sent) {
        settle(id, AckFailure::disconnected);
    }
}

void PendingAcks::clear() {
    for (const auto& [id, waiting] : waiting_) {
        queue_->cancel(waiting.timer);
    }
    waiting_.clear();
}

} // namespace zentavo::socketio
