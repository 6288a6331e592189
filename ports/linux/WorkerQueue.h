#pragma once

#include <utility>

#include "ports/linux/WorkerThread.h"
#include "zentavo/platform/MainQueue.h"

namespace zentavo::linux_port {

/// A queue of the worker. It also stands in for the main thread of a toolkit where there is no toolkit.
class WorkerQueue final : public platform::MainQueue {
public:
    explicit WorkerQueue(WorkerThread& worker) : worker_(worker) {}

    void async(platform::Block block) override { worker_.async(std::move(block)); }
    platform::TimerId after(std::chrono::nanoseconds delay, platform::Block block) override {
        return worker_.after(delay, std::move(block));
    }
    bool cancel(platform::TimerId timer) override { return worker_.cancel(timer); }
    bool isCurrent() const override { return worker_.isCurrent(); }

private:
    WorkerThread& worker_; ///< outlives all its queues
};

} // namespace zentavo::linux_port
