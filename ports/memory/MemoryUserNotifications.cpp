#include "ports/memory/MemoryUserNotifications.h"

#include <utility>

namespace zentavo::testing {

using platform::AuthorizationStatus;

MemoryUserNotifications::MemoryUserNotifications(std::shared_ptr<platform::DispatchQueue> queue)
    : queue_(std::move(queue)) {}

void MemoryUserNotifications::settings(std::function<void(AuthorizationStatus)> completion) {
    MutexLock lock(mutex_);
    const auto status = status_;
    lock.unlock();
    queue_->async([status, completion = std::move(completion)] { completion(status); });
}

void MemoryUserNotifications::requestAuthorization(std::uint32_t options,
                                                   std::function<void(bool, std::optional<std::string>)> completion) {
    MutexLock lock(mutex_);
    requests_.push_back(options);
    const auto error = error_;
    const bool granted = granted_ && !error;
    if (!error) {
        status_ = granted ? AuthorizationStatus::authorized : AuthorizationStatus::denied;
    }
    lock.unlock();
    queue_->async([granted, error, completion = std::move(completion)] { completion(granted, error); });
}

void MemoryUserNotifications::setStatus(AuthorizationStatus status) {
    MutexLock lock(mutex_);
    status_ = status;
}

void MemoryUserNotifications::setGrant(bool granted, std::optional<std::string> error) {
    MutexLock lock(mutex_);
    granted_ = granted;
    error_ = std::move(error);
}

std::vector<std::uint32_t> MemoryUserNotifications::requests() const {
    MutexLock lock(mutex_);
    return requests_;
}

} // namespace zentavo::testing
