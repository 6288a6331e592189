#pragma once

#include <memory>
#include <string>

#include "ports/linux/WorkerThread.h"
#include "zentavo/platform/DispatchQueue.h"

namespace zentavo::linux_port {

/// Queues that are all served by one worker, concurrent ones too: the SDK is a guest in its host's process.
class LinuxDispatchQueues final : public platform::DispatchQueues {
public:
    explicit LinuxDispatchQueues(std::shared_ptr<WorkerThread> worker) : worker_(std::move(worker)) {}

    std::shared_ptr<platform::DispatchQueue> make(std::string label, platform::QueueKind kind) override;

private:
    std::shared_ptr<WorkerThread> worker_;
};

} // namespace zentavo::linux_port
