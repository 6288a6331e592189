#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/NotificationServiceExtension.h"

namespace zentavo::desktop {

/// An extension at work on one push, on a thread of its own. Members on the queue that is given to `start`.
class PushRewriting {
public:
    explicit PushRewriting(std::shared_ptr<platform::NotificationServiceExtension> extension)
        : extension_(std::move(extension)) {}
    /// Waits for the thread, unless it was left to itself.
    ~PushRewriting();
    PushRewriting(const PushRewriting&) = delete;
    PushRewriting& operator=(const PushRewriting&) = delete;

    /// `rewritten` and then `returned` are called on `queue`; the first not at all by an extension that breaks its
    /// promise. False where the system gives no thread.
    bool start(platform::NotificationRequest request, std::shared_ptr<platform::DispatchQueue> queue,
               std::function<void(platform::NotificationContent)> rewritten, platform::Block returned);
    /// Tells the extension that its time is over.
    void expire();
    /// Leaves the thread to itself.
    void leave();

private:
    const std::shared_ptr<platform::NotificationServiceExtension> extension_;
    std::thread thread_;
};

} // namespace zentavo::desktop
