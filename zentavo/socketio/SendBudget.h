#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

namespace zentavo::socketio {

/// How many bytes may wait to be sent. Any thread.
class SendBudget {
public:
    explicit SendBudget(std::size_t maximum) : maximum_(maximum) {}

    /// Takes `bytes` for as long as the result lives; null when they do not fit. What is too large by itself is taken
    /// when nothing else waits.
    std::shared_ptr<const void> take(std::size_t bytes) {
        const auto before = used_->fetch_add(bytes);
        if (before > 0 && before + bytes > maximum_) {
            used_->fetch_sub(bytes);
            return nullptr;
        }
        return std::shared_ptr<const void>(this, [used = used_, bytes](const void*) { used->fetch_sub(bytes); });
    }

private:
    const std::size_t maximum_;
    const std::shared_ptr<std::atomic<std::size_t>> used_ = std::make_shared<std::atomic<std::size_t>>(0);
};

} // namespace zentavo::socketio
