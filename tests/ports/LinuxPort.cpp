#include <atomic>
#include <thread>

#include "ports/linux/CurlURLSession.h"
#include "ports/linux/LinuxDispatchQueues.h"
#include "ports/linux/WorkerQueue.h"
#include "tests/ports/Port.h"
#include "tests/support/LoopbackServer.h"

namespace zentavo::tests {
namespace {

void farSide(const LoopbackServer::Request& request, LoopbackServer::Reply& reply) {
    const auto path = request.target.substr(0, request.target.find('?'));
    if (path == "/hang") {
        reply.hang();
    } else if (path == "/reset") {
        reply.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nabc");
        reply.reset();
    } else if (path == "/loop") {
        reply.answer(302, "", "Location: /loop\r\n");
    } else if (path == "/empty") {
        reply.answer(200);
    } else {
        const auto status = path.substr(path.rfind('/') + 1);
        reply.answer(std::stoi(status), "status " + status, "X-Far: side\r\n");
    }
}

/// With threads of its own, so that they end with each test.
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
        worker_.after(duration, [&] { over = true; });
        until([&] { return over.load(); });
    }
    platform::URLSession& session() override { return session_; }
    URL url(std::string_view path) override { return server_.url(path); }
    URL deadURL() override { return *URL::parse("http://127.0.0.1:" + std::to_string(closedPort()) + "/"); }
    std::vector<SeenRequest> seen() override {
        std::vector<SeenRequest> result;
        for (const auto& request : server_.requests()) {
            result.push_back({request.method, request.target, request.headers, request.body});
        }
        return result;
    }

private:
    LoopbackServer server_{&farSide};
    linux_port::WorkerThread worker_;
    linux_port::LinuxDispatchQueues queues_{std::make_shared<linux_port::WorkerQueue>(worker_)};
    linux_port::WorkerQueue mainQueue_{worker_};
    linux_port::CurlNetworkThread network_;
    linux_port::CurlURLSession session_{network_};
};

const bool added = [] {
    portsUnderTest().push_back({"linux", []() -> std::unique_ptr<Port> { return std::make_unique<LinuxPort>(); }});
    return true;
}();

} // namespace
} // namespace zentavo::tests
