#include "ports/memory/ManualQueues.h"
#include "tests/ports/Port.h"

namespace zentavo::tests {
namespace {

class MemoryPort final : public Port {
public:
    platform::DispatchQueues& queues() override { return queues_; }
    platform::MainQueue& mainQueue() override { return *queues_.mainQueue(); }
    bool until(const std::function<bool()>& done) override {
        for (int i = 0; i < 1000 && !done(); ++i) {
            queues_.advance(std::chrono::milliseconds(10));
        }
        return done();
    }
    void pass(std::chrono::milliseconds duration) override { queues_.advance(duration); }
    bool hasItsOwnThread() const override { return false; }

private:
    zentavo::testing::ManualQueues queues_{std::make_shared<zentavo::testing::ManualClock>()};
};

const bool added = [] {
    portsUnderTest().push_back({"memory", []() -> std::unique_ptr<Port> { return std::make_unique<MemoryPort>(); }});
    return true;
}();

} // namespace
} // namespace zentavo::tests
