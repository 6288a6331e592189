#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>

#include <zentavo/platform/Platform.h>

namespace console {

/// Counts what the SDK still has under way: requests without an answer, retries whose time has not come, and blocks for
/// the main queue.
class Activity {
public:
    void began();
    void ended();
    /// Waits until nothing is under way; false when `limit` has passed first.
    bool waitUntilIdle(std::chrono::milliseconds limit);

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int underWay_ = 0;
};

/// The Linux platform with its store in `folder`, and some of its answers wrapped: every exchange is shown on standard
/// output, and every delay of a queue is divided by `timeScale`, so that a minute's retry can be watched in a second.
std::shared_ptr<zentavo::platform::Platform> makeObservedPlatform(const std::filesystem::path& folder, double timeScale,
                                                                  std::shared_ptr<Activity> activity);

} // namespace console
