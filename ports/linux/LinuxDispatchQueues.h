#pragma once

#include <memory>
#include <string>
#include <utility>

#include "zentavo/platform/DispatchQueue.h"

namespace zentavo::linux_port {

/// All queues are the worker's, concurrent ones too: the SDK is a guest in its host's process.
class LinuxDispatchQueues final : public platform::DispatchQueues {
public:
    explicit LinuxDispatchQueues(std::shared_ptr<platform::DispatchQueue> worker) : worker_(std::move(worker)) {}

    std::shared_ptr<platform::DispatchQueue> make(std::string label, platform::QueueKind kind) override;

private:
    const std::shared_ptr<platform::DispatchQueue> worker_;
};

} // namespace zentavo::linux_port
