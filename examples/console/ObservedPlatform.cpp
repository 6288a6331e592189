#include "ObservedPlatform.h"

#include <cstdio>

#include <ports/linux/LinuxPlatform.h>

using namespace zentavo::platform;

namespace console {

void Activity::began() {
    const std::lock_guard lock(mutex_);
    ++underWay_;
}

void Activity::ended() {
    const std::lock_guard lock(mutex_);
    --underWay_;
    changed_.notify_all();
}

bool Activity::waitUntilIdle(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [this] { return underWay_ == 0; });
}

namespace {

class ObservedSession final : public URLSession {
public:
    ObservedSession(std::shared_ptr<URLSession> session, std::shared_ptr<Activity> activity)
        : session_(std::move(session)), activity_(std::move(activity)) {}

    std::shared_ptr<URLTask> start(std::shared_ptr<const URLRequest> request, std::shared_ptr<DispatchQueue> queue,
                                   Completion completion) override {
        activity_->began();
        auto observed = [activity = activity_, request, completion = std::move(completion)](URLResult result) {
            const std::string path(request->url.path());
            if (result.response) {
                std::printf("    %s %s -> %d\n", request->method.c_str(), path.c_str(), result.response->status);
            } else {
                std::printf("    %s %s -> no answer: %s\n", request->method.c_str(), path.c_str(),
                            result.error ? result.error->message.c_str() : "unknown");
            }
            std::fflush(stdout);
            completion(std::move(result)); // may begin something new, so the end is told afterwards
            activity->ended();
        };
        return session_->start(std::move(request), std::move(queue), std::move(observed));
    }

private:
    const std::shared_ptr<URLSession> session_;
    const std::shared_ptr<Activity> activity_;
};

class ScaledQueue final : public DispatchQueue {
public:
    ScaledQueue(std::shared_ptr<DispatchQueue> queue, double timeScale, std::shared_ptr<Activity> activity)
        : queue_(std::move(queue)), timeScale_(timeScale), activity_(std::move(activity)) {}

    void async(Block block) override { queue_->async(std::move(block)); }

    TimerId after(std::chrono::nanoseconds delay, Block block) override {
        activity_->began();
        const auto scaled = std::chrono::duration_cast<std::chrono::nanoseconds>(delay / timeScale_);
        std::printf("    tries again in %.0f s\n", std::chrono::duration<double>(delay).count());
        return queue_->after(scaled, [activity = activity_, block = std::move(block)] {
            block();
            activity->ended();
        });
    }

    bool cancel(TimerId timer) override {
        const bool cancelled = queue_->cancel(timer);
        if (cancelled) {
            activity_->ended();
        }
        return cancelled;
    }

private:
    const std::shared_ptr<DispatchQueue> queue_;
    const double timeScale_;
    const std::shared_ptr<Activity> activity_;
};

/// What waits for the main queue is under way too.
class ObservedMainQueue final : public MainQueue {
public:
    ObservedMainQueue(std::shared_ptr<MainQueue> queue, std::shared_ptr<Activity> activity)
        : queue_(std::move(queue)), activity_(std::move(activity)) {}

    bool isCurrent() const override { return queue_->isCurrent(); }
    void async(Block block) override {
        activity_->began();
        queue_->async([activity = activity_, block = std::move(block)] {
            block();
            activity->ended();
        });
    }
    TimerId after(std::chrono::nanoseconds delay, Block block) override {
        return queue_->after(delay, std::move(block));
    }
    bool cancel(TimerId timer) override { return queue_->cancel(timer); }

private:
    const std::shared_ptr<MainQueue> queue_;
    const std::shared_ptr<Activity> activity_;
};

class ScaledQueues final : public DispatchQueues {
public:
    ScaledQueues(std::shared_ptr<DispatchQueues> queues, double timeScale, std::shared_ptr<Activity> activity)
        : queues_(std::move(queues)), timeScale_(timeScale), activity_(std::move(activity)) {}

    std::shared_ptr<DispatchQueue> make(std::string label, QueueKind kind) override {
        return std::make_shared<ScaledQueue>(queues_->make(std::move(label), kind), timeScale_, activity_);
    }

private:
    const std::shared_ptr<DispatchQueues> queues_;
    const double timeScale_;
    const std::shared_ptr<Activity> activity_;
};

} // namespace

std::shared_ptr<Platform> makeObservedPlatform(const std::filesystem::path& folder, double timeScale,
                                               std::shared_ptr<Activity> activity) {
    zentavo::linux_port::LinuxOptions options;
    options.dataFolder = folder;
    auto platform = zentavo::linux_port::makeLinuxPlatform(options);
    platform->urlSession = std::make_shared<ObservedSession>(platform->urlSession, activity);
    UserInterface interface = *platform->userInterface();
    interface.mainQueue = std::make_shared<ObservedMainQueue>(interface.mainQueue, activity);
    platform->attach(std::move(interface));
    platform->queues = std::make_shared<ScaledQueues>(platform->queues, timeScale, std::move(activity));
    return platform;
}

} // namespace console
