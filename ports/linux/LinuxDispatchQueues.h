#pragma once

#include <memory>
#include <string>

#include "ports/linux/WorkerThread.h"
#include "zentavo/platform/DispatchQueue.h"

namespace zentavo::linux_port {

/// Queues that are all served by one worker, concurrent ones too: the SDK is a guest in its host's process.
class LinuxDispatchQueues final : public platform::DispatchQueues {
public:
    explicit LinuxDispatchQueues(WorkerThread& worker) : worker_(worker) {}

    std::shared_ptr<platform::DispatchQueue> make(std::string label, platform::QueueKind kind) override;

private:
    WorkerThread& worker_; ///< outlives all its queues
};

} // namespace zentavo::linux_port
