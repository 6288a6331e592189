#include "ports/linux/DetachedUserInterface.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace zentavo::linux_port {

namespace {

/// Completions run on the worker.
class DetachedUserNotifications final : public platform::UserNotifications {
public:
    explicit DetachedUserNotifications(std::shared_ptr<platform::MainQueue> worker) : worker_(std::move(worker)) {}

    void settings(std::function<void(platform::AuthorizationStatus)> completion) override {
        worker_->async(
            [completion = std::move(completion)] { completion(platform::AuthorizationStatus::notDetermined); });
    }
    void requestAuthorization(std::uint32_t,
                              std::function<void(bool, std::optional<std::string>)> completion) override {
        worker_->async([completion = std::move(completion)] { completion(false, "no user interface is attached"); });
    }

    void setDelegate(std::weak_ptr<platform::UserNotificationDelegate>) override {} // there is nothing to tell it
    void add(platform::NotificationRequest, std::function<void(std::optional<std::string>)> completion) override {
        if (completion) {
            worker_->async([completion = std::move(completion)] { completion("no user interface is attached"); });
        }
    }
    void delivered(std::function<void(std::vector<platform::Notification>)> completion) override {
        worker_->async([completion = std::move(completion)] { completion({}); });
    }
    void removeDelivered(std::vector<std::string>) override {}

    // Kept all the same: a service extension has no user interface and makes a category known.
    void addCategory(platform::NotificationCategory category) override {
        MutexLock lock(mutex_);
        const bool known = std::any_of(categories_.begin(), categories_.end(),
                                       [&](const auto& other) { return other.identifier == category.identifier; });
        if (!known) {
            categories_.push_back(std::move(category));
        }
    }
    void categories(std::function<void(std::vector<platform::NotificationCategory>)> completion) override {
        MutexLock lock(mutex_);
        auto known = categories_;
        lock.unlock();
        worker_->async([known = std::move(known), completion = std::move(completion)] { completion(known); });
    }

    void setBadgeCount(std::int64_t) override {}

private:
    const std::shared_ptr<platform::MainQueue> worker_;
    Mutex mutex_;
    std::vector<platform::NotificationCategory> categories_ ZENTAVO_GUARDED_BY(mutex_);
};

class DetachedApplication final : public platform::Application {
public:
    explicit DetachedApplication(std::shared_ptr<platform::SystemLog> log) : log_(std::move(log)) {}

    void registerForRemoteNotifications() override {
        log_->write(platform::LogLevel::info, "No registration for push notifications: no user interface is attached");
    }
    void open(const URL& url) override {
        log_->write(platform::LogLevel::info, "Not opened, no user interface is attached: " + url.text());
    }

private:
    std::shared_ptr<platform::SystemLog> log_;
};

} // namespace

platform::UserInterface detachedUserInterface(std::shared_ptr<platform::MainQueue> worker,
                                              std::shared_ptr<platform::SystemLog> log) {
    auto notifications = std::make_shared<DetachedUserNotifications>(worker);
    return {std::move(worker), std::move(notifications), std::make_shared<DetachedApplication>(std::move(log))};
}

} // namespace zentavo::linux_port
