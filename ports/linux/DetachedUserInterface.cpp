#include "ports/linux/DetachedUserInterface.h"

#include <string>
#include <utility>

#include "ports/linux/WorkerQueue.h"

namespace zentavo::linux_port {

namespace {

/// Completions run on the worker.
class DetachedUserNotifications final : public platform::UserNotifications {
public:
    explicit DetachedUserNotifications(WorkerThread& worker) : worker_(worker) {}

    void settings(std::function<void(platform::AuthorizationStatus)> completion) override {
        worker_.async(
            [completion = std::move(completion)] { completion(platform::AuthorizationStatus::notDetermined); });
    }
    void requestAuthorization(std::uint32_t,
                              std::function<void(bool, std::optional<std::string>)> completion) override {
        worker_.async([completion = std::move(completion)] { completion(false, "no user interface is attached"); });
    }

private:
    WorkerThread& worker_;
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

platform::UserInterface detachedUserInterface(WorkerThread& worker, std::shared_ptr<platform::SystemLog> log) {
    return {std::make_shared<WorkerQueue>(worker), std::make_shared<DetachedUserNotifications>(worker),
            std::make_shared<DetachedApplication>(std::move(log))};
}

} // namespace zentavo::linux_port
