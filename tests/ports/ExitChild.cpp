// A host process that ExitTest.cpp starts: exit-child SCENARIO PORT

#include <chrono>
#include <cstdlib>
#include <future>
#include <string>
#include <thread>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ports/linux/LinuxPlatform.h"

using namespace zentavo;

namespace {

// Never destroyed: threads and static objects go on using them while the process exits.
auto& host = *new std::shared_ptr<platform::Platform>;
auto& queue = *new std::shared_ptr<platform::DispatchQueue>;
auto& base = *new std::string;

void ignore(const platform::URLResult&) {}

std::shared_ptr<platform::URLTask> start(const std::string& path,
                                         platform::URLSession::Completion completion = &ignore) {
    auto request = std::make_shared<platform::URLRequest>(*URL::parse(base + path));
    request->method = "POST";
    request->body = std::make_shared<std::string>(path);
    return host->urlSession->start(std::move(request), queue, std::move(completion));
}

/// A queue of the host's on which handing over takes for ever.
class StuckQueue final : public platform::DispatchQueue {
public:
    void async(platform::Block) override { std::this_thread::sleep_for(std::chrono::seconds(10)); }
    platform::TimerId after(std::chrono::nanoseconds, platform::Block) override { return 0; }
    bool cancel(platform::TimerId) override { return false; }
};

/// What a host's own static object does when it goes after everything else.
struct LateCaller {
    ~LateCaller() {
        if (!task) {
            return;
        }
        task->cancel();
        start("/late");
        queue->async([] { std::abort(); });
        queue->cancel(queue->after(std::chrono::seconds(0), [] { std::abort(); }));
    }
    std::shared_ptr<platform::URLTask> task;
} lateCaller;

int run(const std::string& scenario) {
    if (scenario == "burst") { // more than six connections can carry at a time, and nobody waits
        for (int i = 0; i < 300; ++i) {
            start("/" + std::to_string(i));
        }
    } else if (scenario == "hang" || scenario == "refused") {
        for (int i = 0; i < 20; ++i) {
            start("/hang");
        }
    } else if (scenario == "completion") { // exit on the worker itself, with more under way
        start("/1", [](auto) {
            start("/hang");
            std::exit(7);
        });
        std::this_thread::sleep_for(std::chrono::seconds(10));
    } else if (scenario == "busy") { // a block of the host that does not end
        std::promise<void> running;
        queue->async([&running] {
            running.set_value();
            std::this_thread::sleep_for(std::chrono::seconds(10));
        });
        running.get_future().wait();
    } else if (scenario == "stuck") { // the network thread itself cannot end
        queue = std::make_shared<StuckQueue>();
        start("/1");
    } else if (scenario == "shortage") { // no file descriptor is free when libcurl is looked for first
        const auto isRefused = [](const std::string& path) {
            std::promise<bool> refused;
            start(path, [&](const platform::URLResult& result) { refused.set_value(result.error.has_value()); });
            return refused.get_future().get();
        };
        rlimit plenty{};
        getrlimit(RLIMIT_NOFILE, &plenty);
        const int free = dup(STDIN_FILENO);
        close(free);
        const rlimit none{static_cast<rlim_t>(free), plenty.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        const bool first = isRefused("/1");
        setrlimit(RLIMIT_NOFILE, &plenty);
        return first && !isRefused("/2") ? 0 : 1;
    } else if (scenario == "late") {
        std::promise<void> done;
        lateCaller.task = start("/1", [&](auto) { done.set_value(); });
        done.get_future().wait();
    } else if (scenario == "threads") { // others go on calling while the process exits
        for (int i = 0; i < 4; ++i) {
            std::thread([] {
                for (;;) {
                    auto request = std::make_shared<platform::URLRequest>(*URL::parse(base + "/x"));
                    host->urlSession->start(request, queue, [](auto) {});
                    queue->after(std::chrono::milliseconds(1), [] {});
                    std::this_thread::sleep_for(std::chrono::microseconds(200));
                }
            }).detach();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    } else if (scenario == "fork") { // the child has no threads, and must neither wait for them nor disturb the parent
        std::promise<void> done;
        start("/1", [&](auto) { done.set_value(); });
        done.get_future().wait();
        const pid_t child = fork();
        if (child == 0) {
            start("/child");
            queue->async([] {});
            std::exit(0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        start("/2");
        return status == 0 ? 0 : 1;
    }
    return 0;
}

} // namespace

int main(int, char** arguments) {
    base = std::string("http://127.0.0.1:") + arguments[2];
    host = linux_port::makeLinuxPlatform({.dataFolder = "/nonexistent", .mainBundle = {}});
    queue = host->queues->make("host", platform::QueueKind::serial);
    return run(arguments[1]);
}
