#include "ports/desktop/NotificationServiceClient.h"

#include <utility>

#include "ports/desktop/AppInterfaces.h"
#include "ports/desktop/MessageBody.h"
#include "ports/desktop/NotificationCodec.h"

namespace zentavo::desktop {

namespace {

/// Somebody waits for the sum of what is shown: not for long.
constexpr std::chrono::milliseconds deliveredTimeout{2'000};

} // namespace

NotificationServiceClient::NotificationServiceClient(std::shared_ptr<SessionBus> bus, std::string name)
    : bus_(std::move(bus)), name_(std::move(name)) {}

SessionBus::Call NotificationServiceClient::call(const char* method) const {
    return {name_, service_interface::path, service_interface::name, method, {}};
}

void NotificationServiceClient::registerForPushes(std::function<void(std::string)> failed) const {
    if (name_.empty()) {
        return bus_->run([failed = std::move(failed)] { failed("the program has no bundle identifier for the bus"); });
    }
    bus_->call(call("Register"), [failed = std::move(failed)](const Result<Variant>& outcome) {
        if (!outcome) {
            failed(outcome.error().message);
        }
    });
}

void NotificationServiceClient::delivered(std::function<void(std::vector<platform::Notification>)> answer) const {
    if (name_.empty()) {
        return bus_->run([answer = std::move(answer)] { answer({}); });
    }
    auto question = call("Delivered");
    question.answerType = "(as)";
    question.mayStart = false;
    question.timeout = deliveredTimeout;
    bus_->call(std::move(question), [answer = std::move(answer)](const Result<Variant>& texts) {
        std::vector<platform::Notification> shown;
        for (const std::string& text : texts ? body::texts(*texts) : std::vector<std::string>()) {
            if (auto notification = codec::readNotification(text)) {
                shown.push_back(std::move(*notification));
            }
        }
        answer(std::move(shown));
    });
}

void NotificationServiceClient::removeDelivered(const std::vector<std::string>& identifiers) const {
    if (name_.empty()) {
        return;
    }
    std::vector<std::string> texts;
    for (const std::string& identifier : identifiers) {
        if (g_utf8_validate_len(identifier.data(), identifier.size(), nullptr) != FALSE) {
            texts.push_back(identifier);
        }
    }
    auto request = call("RemoveDelivered");
    request.parameters = body::of(texts);
    request.mayStart = false;
    bus_->call(std::move(request));
}

} // namespace zentavo::desktop
