#include "ports/memory/MemoryUserNotifications.h"

#include <algorithm>
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

void MemoryUserNotifications::setDelegate(std::weak_ptr<platform::UserNotificationDelegate> delegate) {
    MutexLock lock(mutex_);
    delegate_ = std::move(delegate);
    lock.unlock();
    queue_->async([self = shared_from_this()] { self->tellDelegate(); });
}

void MemoryUserNotifications::add(platform::NotificationRequest request,
                                  std::function<void(std::optional<std::string>)> completion) {
    MutexLock lock(mutex_);
    std::erase_if(shown_, [&](const auto& other) { return other.request.identifier == request.identifier; });
    if (request.content.badge) {
        badgeCount_ = *request.content.badge;
    }
    shown_.push_back({std::move(request)});
    lock.unlock();
    if (completion) {
        queue_->async([completion = std::move(completion)] { completion(std::nullopt); });
    }
}

void MemoryUserNotifications::delivered(std::function<void(std::vector<platform::Notification>)> completion) {
    queue_->async([shown = shown(), completion = std::move(completion)] { completion(shown); });
}

void MemoryUserNotifications::removeDelivered(std::vector<std::string> identifiers) {
    MutexLock lock(mutex_);
    std::erase_if(shown_, [&](const auto& notification) {
        return std::find(identifiers.begin(), identifiers.end(), notification.request.identifier) != identifiers.end();
    });
}

void MemoryUserNotifications::addCategory(platform::NotificationCategory category) {
    MutexLock lock(mutex_);
    const bool known = std::any_of(categories_.begin(), categories_.end(),
                                   [&](const auto& other) { return other.identifier == category.identifier; });
    if (!known) {
        categories_.push_back(std::move(category));
    }
}

void MemoryUserNotifications::categories(std::function<void(std::vector<platform::NotificationCategory>)> completion) {
    queue_->async([known = knownCategories(), completion = std::move(completion)] { completion(known); });
}

void MemoryUserNotifications::setBadgeCount(std::int64_t count) {
    MutexLock lock(mutex_);
    badgeCount_ = count;
}

void MemoryUserNotifications::arrive(platform::Notification notification) {
    queue_->async([self = shared_from_this(), notification = std::move(notification)] {
        MutexLock lock(self->mutex_);
        const auto delegate = self->delegate_.lock();
        lock.unlock();
        if (delegate) {
            delegate->userNotificationCenter(*self, notification, [self](std::uint32_t options) {
                MutexLock answerLock(self->mutex_);
                self->presentations_.push_back(options);
            });
        }
    });
}

void MemoryUserNotifications::respond(platform::NotificationResponse response) {
    MutexLock lock(mutex_);
    waiting_.push_back(std::move(response));
    if (waiting_.size() > maximumWaitingResponses) {
        waiting_.pop_front();
    }
    lock.unlock();
    queue_->async([self = shared_from_this()] { self->tellDelegate(); });
}

void MemoryUserNotifications::tellDelegate() {
    MutexLock lock(mutex_);
    const auto delegate = delegate_.lock();
    while (delegate && !waiting_.empty()) {
        const auto response = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        delegate->userNotificationCenter(*this, response, [self = shared_from_this()] {
            MutexLock answerLock(self->mutex_);
            ++self->finishedResponses_;
        });
        lock.lock();
    }
}

std::vector<std::uint32_t> MemoryUserNotifications::presentations() const {
    MutexLock lock(mutex_);
    return presentations_;
}

std::size_t MemoryUserNotifications::finishedResponses() const {
    MutexLock lock(mutex_);
    return finishedResponses_;
}

std::vector<platform::Notification> MemoryUserNotifications::shown() const {
    MutexLock lock(mutex_);
    return shown_;
}

std::vector<platform::NotificationCategory> MemoryUserNotifications::knownCategories() const {
    MutexLock lock(mutex_);
    return categories_;
}

std::int64_t MemoryUserNotifications::badgeCount() const {
    MutexLock lock(mutex_);
    return badgeCount_;
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
