#include "ports/desktop/DelegateDoor.h"

#include <utility>

#include "zentavo/foundation/Fault.h"

namespace zentavo::desktop {

void DelegateDoor::setMainQueue(std::shared_ptr<platform::MainQueue> mainQueue) {
    MutexLock lock(mutex_);
    mainQueue_.swap(mainQueue);
    lock.unlock(); // the earlier one is released outside the lock
}

void DelegateDoor::onMain(platform::Block block) const {
    MutexLock lock(mutex_);
    const auto queue = mainQueue_;
    lock.unlock();
    queue->async([block = std::move(block)] { entryPoint("user notifications", block); });
}

void DelegateDoor::setDelegate(const Center& center, std::weak_ptr<platform::UserNotificationDelegate> delegate) {
    MutexLock lock(mutex_);
    delegate_.swap(delegate);
    lock.unlock();
    onMain([this, center] { tellWaiting(center); });
}

void DelegateDoor::tell(const Center& center, platform::NotificationResponse response) {
    MutexLock lock(mutex_);
    waiting_.push_back(std::move(response));
    if (waiting_.size() > platform::UserNotifications::maximumWaitingResponses) {
        waiting_.pop_front();
    }
    lock.unlock();
    onMain([this, center] { tellWaiting(center); });
}

void DelegateDoor::tellWaiting(const Center& center) {
    std::shared_ptr<platform::UserNotificationDelegate> delegate; // released after the lock
    MutexLock lock(mutex_);
    delegate = delegate_.lock();
    while (delegate && !waiting_.empty()) {
        const auto response = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        delegate->userNotificationCenter(*center, response, [] {});
        lock.lock();
    }
}

void DelegateDoor::ask(const Center& center, const platform::Notification& notification,
                       std::function<void(std::uint32_t)> completion) const {
    MutexLock lock(mutex_);
    const auto delegate = delegate_.lock();
    lock.unlock();
    if (delegate) {
        delegate->userNotificationCenter(*center, notification, std::move(completion));
    } else {
        completion(presentEverything);
    }
}

} // namespace zentavo::desktop
