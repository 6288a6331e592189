#include <atomic>
#include <thread>

#include "ports/linux/LinuxDispatchQueues.h"
#include "ports/linux/WorkerQueue.h"
#include "tests/ports/Port.h"

namespace zentavo::tests {
namespace {

class LinuxPort final : public Port {
public:
    platform::DispatchQueues& queues() override { return queues_; }
    platform::MainQueue& mainQueue() override { return mainQueue_; }
    bool until(const std::function<bool()>& done) override {
        for (int i = 0; i < 10'000 && !done(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return done();
    }
    void pass(std::chrono::milliseconds duration) override {
        std::atomic<bool> over = false;
        worker_->after(duration, [&] { over = true; });
        until([&] { return over.load(); });
    }

private:
    std::shared_ptr<linux_port::WorkerThread> worker_ = std::make_shared<linux_port::WorkerThread>();
    linux_port::LinuxDispatchQueues queues_{worker_};
    linux_port::WorkerQueue mainQueue_{worker_};
};

const bool added = [] {
    portsUnderTest().push_back({"linux", []() -> std::unique_ptr<Port> { return std::make_unique<LinuxPort>(); }});
    return true;
}();

} // namespace
} // namespace zentavo::tests
