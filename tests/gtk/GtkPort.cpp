#include "ports/gtk/GtkMainQueue.h"
#include "ports/gtk/MainThread.h"
#include "ports/memory/ScriptedURLSession.h"
#include "tests/gtk/GuiTest.h"
#include "tests/ports/Port.h"

namespace zentavo::tests {
namespace {

/// The toolkit's loop, which the test runs on its own thread; each queue is one more on that loop.
class GtkPort final : public Port, platform::DispatchQueues {
public:
    GtkPort() { gtk::MainThread::adopt(); }
    platform::DispatchQueues& queues() override { return *this; }
    platform::MainQueue& mainQueue() override { return mainQueue_; }
    bool until(const std::function<bool()>& done) override { return tests::until(done); }
    void pass(std::chrono::milliseconds duration) override {
        bool over = false;
        mainQueue_.after(duration, [&] { over = true; });
        tests::until([&] { return over; });
    }
    platform::URLSession& session() override { return session_; }
    URL url(std::string_view path) override { return *URL::parse("http://far.example" + std::string(path)); }
    URL deadURL() override { return url("/"); }
    std::vector<SeenRequest> seen() override { return {}; }

private:
    std::shared_ptr<platform::DispatchQueue> make(std::string, platform::QueueKind) override {
        return std::make_shared<gtk::GtkMainQueue>();
    }

    gtk::GtkMainQueue mainQueue_;
    zentavo::testing::ScriptedURLSession session_;
};

const bool added = [] {
    portsUnderTest().push_back({"gtk", []() -> std::unique_ptr<Port> { return std::make_unique<GtkPort>(); }});
    return true;
}();

} // namespace
} // namespace zentavo::tests
