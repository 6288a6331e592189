#include "ports/memory/ManualQueues.h"
#include "ports/memory/ScriptedURLSession.h"
#include "tests/ports/Port.h"

namespace zentavo::tests {
namespace {

using zentavo::testing::ScriptedAnswer;

class MemoryPort final : public Port {
public:
    MemoryPort() {
        session_.on({}, [](const platform::URLRequest& request) -> std::optional<ScriptedAnswer> {
            const std::string status(request.url.path().substr(8)); // after "/status/"
            return ScriptedAnswer{std::stoi(status), "status " + status, {{"X-Far", "side"}}};
        });
        session_.on({.pathPrefix = "/empty"}, ScriptedAnswer{200, ""});
        session_.on({.host = "dead.example"}, ScriptedAnswer::failure(platform::URLErrorKind::cannotConnect));
        session_.on({.pathPrefix = "/hang"}, ScriptedAnswer::never());
        session_.on({.pathPrefix = "/reset"}, ScriptedAnswer::failure(platform::URLErrorKind::connectionLost));
        session_.on({.pathPrefix = "/loop"}, ScriptedAnswer::failure(platform::URLErrorKind::tooManyRedirects));
    }
    platform::DispatchQueues& queues() override { return queues_; }
    platform::MainQueue& mainQueue() override { return *queues_.mainQueue(); }
    bool until(const std::function<bool()>& done) override {
        for (int i = 0; i < 1000 && !done(); ++i) {
            queues_.advance(std::chrono::milliseconds(10));
        }
        return done();
    }
    void pass(std::chrono::milliseconds duration) override { queues_.advance(duration); }
    platform::URLSession& session() override { return session_; }
    URL url(std::string_view path) override { return *URL::parse("http://far.example" + std::string(path)); }
    URL deadURL() override { return *URL::parse("http://dead.example/status/200"); }
    std::vector<SeenRequest> seen() override {
        std::vector<SeenRequest> result;
        for (const auto& request : session_.requests()) {
            const auto query = request->url.query();
            result.push_back({request->method,
                              std::string(request->url.path()) + (query ? "?" + std::string(*query) : ""),
                              {request->headers.begin(), request->headers.end()},
                              request->body ? *request->body : ""});
        }
        return result;
    }
    bool watchesIdleTime() const override { return false; }
    bool speaksHTTP() const override { return false; }
    bool hasItsOwnThread() const override { return false; }

private:
    zentavo::testing::ScriptedURLSession session_;
    zentavo::testing::ManualQueues queues_{std::make_shared<zentavo::testing::ManualClock>()};
};

const bool added = [] {
    portsUnderTest().push_back({"memory", []() -> std::unique_ptr<Port> { return std::make_unique<MemoryPort>(); }});
    return true;
}();

} // namespace
} // namespace zentavo::tests
