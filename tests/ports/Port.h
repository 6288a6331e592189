#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/MainQueue.h"

namespace zentavo::tests {

/// The door through which the conformance suites see a port's queues and time.
class Port {
public:
    virtual ~Port() = default;

    virtual platform::DispatchQueues& queues() = 0;
    virtual platform::MainQueue& mainQueue() = 0;
    /// Lets blocks run until `done` says so, for a few seconds at most; true when it did.
    virtual bool until(const std::function<bool()>& done) = 0;
    /// Lets `duration` pass, and everything run that is due by then.
    virtual void pass(std::chrono::milliseconds duration) = 0;

    /// Blocks run on a thread of the port's own, not on the test's.
    virtual bool hasItsOwnThread() const { return true; }
};

/// A port that the suites run over. Each port's file here adds its own, so a build without a port runs without it.
struct PortUnderTest {
    const char* name;
    std::unique_ptr<Port> (*make)();
};
std::vector<PortUnderTest>& portsUnderTest();

/// The base of a suite that runs over every port.
class PortTest : public ::testing::TestWithParam<PortUnderTest> {
public:
    static std::string name(const ::testing::TestParamInfo<PortUnderTest>& info) { return info.param.name; }

protected:
    const std::unique_ptr<Port> port = GetParam().make();
};

} // namespace zentavo::tests
