#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

#include "zentavo/socketio/Event.h"

namespace zentavo::socketio {

class Namespace;

/// Where the answer to one event goes.
class Acknowledge::Receiver {
public:
    Receiver(std::weak_ptr<Namespace> space, std::uint64_t id, std::uint64_t session)
        : space_(std::move(space)), id_(id), session_(session) {}

    Result<void> answer(Arguments arguments);

private:
    const std::weak_ptr<Namespace> space_;
    const std::uint64_t id_;
    const std::uint64_t session_;
    std::atomic<bool> used_ = false;
};

} // namespace zentavo::socketio
