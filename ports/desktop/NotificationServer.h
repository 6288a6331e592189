#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/desktop/NotificationMessage.h"
#include "ports/desktop/SessionBus.h"

namespace zentavo::desktop {

/// The desktop's notification service, org.freedesktop.Notifications. Members on the bus's thread, and everything is told
/// there.
class NotificationServer : public std::enable_shared_from_this<NotificationServer> {
public:
    struct Events {
        /// The user pressed the button `key` of the notification `id`.
        std::function<void(std::uint32_t id, const std::string& key)> invoked;
        /// Comes before that, where the service knows such tokens: a window shows it to come to the front.
        std::function<void(std::uint32_t id, const std::string& token)> activationToken;
        std::function<void(std::uint32_t id, std::uint32_t reason)> closed;
        /// The service is there. `server` names its process among all that there are and were, also on other buses.
        std::function<void(const std::string& server)> came;
        /// The service is not there (any more), and nothing that it showed is.
        std::function<void()> gone;
    };
    /// What `closed` says where the user put a notification away.
    static constexpr std::uint32_t dismissedByUser = 2;

    explicit NotificationServer(std::shared_ptr<SessionBus> bus) : bus_(std::move(bus)) {}
    /// Once, before anything else. Any thread.
    void listen(Events events);

    /// Whether somebody answers, or would be started to answer. An error where there is no bus.
    void available(std::function<void(Result<bool>)> answer);
    /// Asked once of each program that plays the service.
    void capabilities(std::function<void(Result<ServerCapabilities>)> answer);
    /// `arguments` are those of Notify; the answer is the notification's id.
    void show(const Variant& arguments, std::function<void(Result<std::uint32_t>)> answer);
    void close(std::uint32_t id);

    /// The key of a button, or a token.
    struct Text {
        std::uint32_t id = 0;
        std::string text;
    };
    struct Closed {
        std::uint32_t id = 0;
        std::uint32_t reason = 0;
    };
    /// What the signals ActionInvoked, ActivationToken and NotificationClosed say. Nothing declares a signal to us, so it may have any
    /// contents: others than the service's say nothing.
    static std::optional<Text> readText(const Variant& signal);
    static std::optional<Closed> readClosed(const Variant& signal);

private:
    const std::shared_ptr<SessionBus> bus_;
    std::string busId_; ///< empty until the bus has said it
    std::optional<ServerCapabilities> capabilities_;
};

} // namespace zentavo::desktop
