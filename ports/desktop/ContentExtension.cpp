#include "ports/desktop/ContentExtension.h"

#include <algorithm>
#include <utility>

#include "ports/desktop/AppInterfaces.h"
#include "ports/desktop/MessageBody.h"
#include "ports/desktop/NotificationCodec.h"

namespace zentavo::desktop {

ContentExtension::ContentExtension(std::shared_ptr<SessionBus> bus, std::string name,
                                   std::shared_ptr<platform::SystemLog> log)
    : bus_(std::move(bus)), name_(std::move(name)), log_(std::move(log)) {}

std::shared_ptr<ContentExtension> ContentExtension::make(std::shared_ptr<SessionBus> bus, std::string name,
                                                         std::shared_ptr<platform::SystemLog> log) {
    const std::shared_ptr<ContentExtension> made(new ContentExtension(std::move(bus), std::move(name), std::move(log)));
    const std::weak_ptr<ContentExtension> weak = made;
    made->bus_->watch(made->name_, [weak](bool present) {
        if (const auto self = weak.lock()) {
            const MutexLock lock(self->mutex_);
            self->runs_ = present;
        }
    });
    made->bus_->call({.destination = "org.freedesktop.DBus",
                      .path = "/org/freedesktop/DBus",
                      .interface = "org.freedesktop.DBus",
                      .method = "ListActivatableNames",
                      .parameters = {},
                      .answerType = "(as)"},
                     [weak](const Result<Variant>& names) {
                         const auto self = weak.lock();
                         if (!self || !names) {
                             return;
                         }
                         const auto all = body::texts(*names);
                         const MutexLock lock(self->mutex_);
                         self->canStart_ = std::find(all.begin(), all.end(), self->name_) != all.end();
                     });
    return made;
}

bool ContentExtension::isThere() const {
    const MutexLock lock(mutex_);
    return runs_ || canStart_;
}

void ContentExtension::show(const platform::Notification& notification, std::function<void()> failed) {
    const auto text = codec::write(notification);
    if (!text) {
        log_->write(platform::LogLevel::warning, "A notification is not shown in full: " + text.error().message);
        return bus_->run(std::move(failed));
    }
    show(*text, 2, std::move(failed));
}

void ContentExtension::show(const std::string& text, int attemptsLeft, std::function<void()> failed) {
    bus_->call({.destination = name_,
                .path = content_interface::path,
                .interface = content_interface::name,
                .method = "Show",
                .parameters = Variant::share(g_variant_new("(s)", text.c_str())),
                .timeout = timeout},
               [self = shared_from_this(), text, left = attemptsLeft - 1,
                failed = std::move(failed)](const Result<Variant>& shown) {
                   if (shown) {
                       return;
                   }
                   self->log_->write(platform::LogLevel::warning,
                                     "A notification is not shown in full: " + shown.error().message);
                   if (left > 0) {
                       self->show(text, left, failed);
                   } else {
                       failed();
                   }
               });
}

} // namespace zentavo::desktop
