#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/MainQueue.h"
#include "zentavo/platform/URLSession.h"

namespace zentavo::tests {

/// A request as the far side saw it.
struct SeenRequest {
    std::string method;
    std::string target; ///< path and query
    std::vector<platform::Header> headers;
    std::string body;
};

/// The door through which the conformance suites see a port's queues, time and network.
class Port {
public:
    virtual ~Port() = default;

    virtual platform::DispatchQueues& queues() = 0;
    virtual platform::MainQueue& mainQueue() = 0;
    /// Lets blocks run until `done` says so, for a few seconds at most; true when it did.
    virtual bool until(const std::function<bool()>& done) = 0;
    /// Lets `duration` pass, and everything run that is due by then.
    virtual void pass(std::chrono::milliseconds duration) = 0;

    virtual platform::URLSession& session() = 0;
    /// A place on the far side: "/status/N" answers with that status and the body "status N", "/empty" with no bytes,
    /// "/hang" never, "/reset" breaks off in the middle of its answer, "/loop" sends to itself for ever.
    virtual URL url(std::string_view path) = 0;
    /// A place where nobody listens.
    virtual URL deadURL() = 0;
    /// What the far side has got.
    virtual std::vector<SeenRequest> seen() = 0;

    /// Exchanges that stand still end by their own idle timeout.
    virtual bool watchesIdleTime() const { return true; }
    /// Requests travel as bytes, so the far side sees what HTTP makes of them.
    virtual bool speaksHTTP() const { return true; }
    /// Blocks run on a thread of the port's own, not on the test's.
    virtual bool hasItsOwnThread() const { return true; }
};

/// A port that the suites run over. Each port's file here adds its own, so a build without a port runs without it.
struct PortUnderTest {
    const char* name;
    std::unique_ptr<Port> (*make)();
};
std::vector<PortUnderTest>& portsUnderTest();
inline void PrintTo(const PortUnderTest& port, std::ostream* out) { *out << port.name; }

/// The base of a suite that runs over every port.
class PortTest : public ::testing::TestWithParam<PortUnderTest> {
public:
    static std::string name(const ::testing::TestParamInfo<PortUnderTest>& info) { return info.param.name; }

protected:
    const std::unique_ptr<Port> port = GetParam().make();
};

} // namespace zentavo::tests
