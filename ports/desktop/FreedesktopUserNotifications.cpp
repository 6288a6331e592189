#include "ports/desktop/FreedesktopUserNotifications.h"

#include <algorithm>
#include <utility>

namespace zentavo::desktop {

using platform::AuthorizationStatus;

FreedesktopUserNotifications::FreedesktopUserNotifications(Parts parts)
    : parts_(std::move(parts)), server_(std::make_shared<NotificationServer>(parts_.bus)),
      badge_(parts_.bus, parts_.app.desktopEntry), service_(parts_.bus, parts_.notificationService),
      door_(parts_.mainQueue) {}

template <class... Arguments>
auto FreedesktopUserNotifications::weakly(void (FreedesktopUserNotifications::*member)(Arguments...)) {
    return [weak = weak_from_this(), member](Arguments... arguments) {
        if (const auto self = weak.lock()) {
            (self.get()->*member)(arguments...);
        }
    };
}

std::shared_ptr<FreedesktopUserNotifications> FreedesktopUserNotifications::make(Parts parts) {
    const std::shared_ptr<FreedesktopUserNotifications> made(new FreedesktopUserNotifications(std::move(parts)));
    made->server_->listen({made->weakly(&FreedesktopUserNotifications::invoked),
                           made->weakly(&FreedesktopUserNotifications::activationToken),
                           made->weakly(&FreedesktopUserNotifications::closed),
                           made->weakly(&FreedesktopUserNotifications::came),
                           made->weakly(&FreedesktopUserNotifications::gone)});
    // Launchers forget the number with the process that said it. Not here: the suite is opened for it.
    if (made->parts_.suite) {
        made->parts_.bus->run([weak = std::weak_ptr(made)] {
            const auto self = weak.lock();
            if (const std::int64_t count = self ? self->parts_.suite->badge() : 0; count > 0) {
                self->badge_.set(count);
            }
        });
    }
    return made;
}

// --- Permission, kinds, badge ----------------------------------------------------------------------------------------

void FreedesktopUserNotifications::settings(std::function<void(AuthorizationStatus)> completion) {
    parts_.bus->run([server = server_, completion = std::move(completion)] {
        server->available([completion](const Result<bool>& available) {
            completion(available && *available ? AuthorizationStatus::authorized : AuthorizationStatus::denied);
        });
    });
}

void FreedesktopUserNotifications::requestAuthorization(
    std::uint32_t, std::function<void(bool, std::optional<std::string>)> completion) {
    parts_.bus->run([server = server_, completion = std::move(completion)] {
        server->available([completion](const Result<bool>& available) {
            if (available) {
                completion(*available, std::nullopt);
            } else {
                completion(false, available.error().message);
            }
        });
    });
}

void FreedesktopUserNotifications::addCategory(platform::NotificationCategory category) {
    MutexLock lock(mutex_);
    const bool known = std::any_of(categories_.begin(), categories_.end(),
                                   [&](const auto& other) { return other.identifier == category.identifier; });
    if (known) {
        return;
    }
    categories_.push_back(category);
    lock.unlock();
    if (parts_.suite) {
        parts_.bus->run([suite = parts_.suite, category = std::move(category)] { suite->addCategory(category); });
    }
}

void FreedesktopUserNotifications::categories(
    std::function<void(std::vector<platform::NotificationCategory>)> completion) {
    MutexLock lock(mutex_);
    auto known = categories_;
    lock.unlock();
    parts_.bus->run([known = std::move(known), completion = std::move(completion)] { completion(known); });
}

std::vector<platform::NotificationCategory> FreedesktopUserNotifications::allCategories() {
    MutexLock lock(mutex_);
    auto all = categories_;
    lock.unlock();
    if (parts_.suite) {
        // After ours: the first that brings a button wins.
        const auto registered = parts_.suite->categories();
        all.insert(all.end(), registered.begin(), registered.end());
    }
    return all;
}

void FreedesktopUserNotifications::setBadgeCount(std::int64_t count) {
    if (parts_.suite) {
        parts_.bus->run([suite = parts_.suite, count] { suite->setBadge(count); });
    }
    badge_.set(count);
}

// --- Delegate --------------------------------------------------------------------------------------------------------

void FreedesktopUserNotifications::setDelegate(std::weak_ptr<platform::UserNotificationDelegate> delegate) {
    door_.setDelegate(shared_from_this(), std::move(delegate));
}

void FreedesktopUserNotifications::respond(platform::NotificationResponse response) {
    parts_.bus->run([self = shared_from_this(), response = std::move(response)] {
        self->takeAway({response.notification.request.identifier});
        self->answered(response);
    });
}

void FreedesktopUserNotifications::presentation(const platform::Notification& notification,
                                                std::function<void(std::uint32_t)> completion) {
    door_.onMain([self = shared_from_this(), notification, completion = std::move(completion)] {
        if (self->parts_.isInFront && self->parts_.isInFront()) {
            self->door_.ask(self, notification, completion);
        } else {
            completion(presentEverything);
        }
    });
}

// --- Showing: one at a time ------------------------------------------------------------------------------------------

void FreedesktopUserNotifications::add(platform::NotificationRequest request,
                                       std::function<void(std::optional<std::string>)> completion) {
    parts_.bus->run([self = shared_from_this(), request = std::move(request), completion = std::move(completion)] {
        self->enqueue({++self->lastNumber_, {request}, completion});
    });
}

void FreedesktopUserNotifications::enqueue(Pending pending) {
    if (pending_.size() == maximumPending) {
        removeFiles(pending.notification);
        if (pending.completion) {
            pending.completion("too many notifications wait to be shown");
        }
        return;
    }
    pending_.push_back(std::move(pending));
    if (pending_.size() == 1) {
        begin();
    }
}

void FreedesktopUserNotifications::begin() {
    if (pending_.front().cancelled) {
        removeFiles(pending_.front().notification);
        return finish(std::nullopt);
    }
    const std::uint64_t number = pending_.front().number;
    if (!parts_.isInFront) {
        return present(number, presentEverything);
    }
    // Whichever comes first; the other finds another notification in front, or none.
    const auto presented = weakly(&FreedesktopUserNotifications::present);
    parts_.bus->after(presentationTimeout, [presented, number] { presented(number, presentEverything); });
    presentation(pending_.front().notification, [weak = weak_from_this(), presented, number](std::uint32_t options) {
        if (const auto self = weak.lock()) {
            self->parts_.bus->run([presented, number, options] { presented(number, options); });
        }
    });
}

void FreedesktopUserNotifications::present(std::uint64_t number, std::uint32_t options) {
    if (pending_.empty() || pending_.front().number != number || presenting_ == number) {
        return;
    }
    presenting_ = number;
    const platform::Notification& notification = pending_.front().notification;
    if (notification.request.content.badge && (options & platform::presentBadge) != 0) {
        setBadgeCount(*notification.request.content.badge);
    }
    if ((options & platform::presentAlert) == 0) {
        removeFiles(notification);
        return finish(std::nullopt);
    }
    server_->capabilities([self = shared_from_this(), options](const Result<ServerCapabilities>& capabilities) {
        if (capabilities) {
            self->show(options, *capabilities);
        } else {
            self->failed(capabilities.error());
        }
    });
}

void FreedesktopUserNotifications::show(std::uint32_t options, const ServerCapabilities& capabilities) {
    const platform::NotificationRequest& request = pending_.front().notification.request;
    const bool expandable = parts_.expand && (!parts_.canExpand || parts_.canExpand());
    auto actions = actionsOf(request.content, allCategories(), expandable);
    const auto earlier = find(request.identifier);
    const Variant arguments = notifyArguments(parts_.app, request.content, actions, capabilities, options,
                                              earlier != shown_.end() ? earlier->id : 0);
    server_->show(arguments,
                  [self = shared_from_this(), actions = std::move(actions)](const Result<std::uint32_t>& id) {
                      if (id) {
                          self->shown(*id, actions);
                      } else {
                          self->failed(id.error());
                      }
                  });
}

void FreedesktopUserNotifications::shown(std::uint32_t id, std::vector<DesktopAction> actions) {
    const platform::Notification& notification = pending_.front().notification;
    if (const auto earlier = find(notification.request.identifier); earlier != shown_.end()) {
        forget(earlier, &notification);
    }
    shown_.push_back({{id, notification, std::move(actions)}});
    if (parts_.kept && !serverProcess_.empty()) {
        parts_.kept->add(serverProcess_, shown_.back());
    }
    if (pending_.front().cancelled || shown_.size() > maximumShown) {
        const auto unwanted = pending_.front().cancelled ? shown_.end() - 1 : shown_.begin();
        server_->close(unwanted->id);
        forget(unwanted);
    }
    finish(std::nullopt);
}

void FreedesktopUserNotifications::failed(const Error& error) {
    removeFiles(pending_.front().notification);
    finish("the notification is not shown: " + error.message);
}

void FreedesktopUserNotifications::finish(std::optional<std::string> error) {
    const auto completion = std::move(pending_.front().completion);
    pending_.pop_front();
    if (completion) {
        completion(std::move(error));
    }
    if (!pending_.empty()) {
        begin();
    }
}

// --- What is shown ---------------------------------------------------------------------------------------------------

void FreedesktopUserNotifications::delivered(std::function<void(std::vector<platform::Notification>)> completion) {
    service_.delivered([self = shared_from_this(), completion = std::move(completion)](auto elsewhere) {
        self->deliveredHere([completion, elsewhere = std::move(elsewhere)](const auto& here) {
            auto all = elsewhere;
            all.insert(all.end(), here.begin(), here.end());
            completion(std::move(all));
        });
    });
}

void FreedesktopUserNotifications::deliveredHere(std::function<void(std::vector<platform::Notification>)> completion) {
    parts_.bus->run([self = shared_from_this(), completion = std::move(completion)] {
        std::vector<platform::Notification> notifications;
        for (const Shown& shown : self->shown_) {
            if (!shown.earlier) {
                notifications.push_back(shown.notification);
            }
        }
        completion(std::move(notifications));
    });
}

void FreedesktopUserNotifications::files(std::function<void(std::set<std::string> paths)> completion) {
    parts_.bus->run([self = shared_from_this(), completion = std::move(completion)] {
        std::set<std::string> paths;
        for (const Shown& shown : self->shown_) {
            for (const auto& attachment : shown.notification.request.content.attachments) {
                paths.insert(attachment.path);
            }
        }
        completion(std::move(paths));
    });
}

void FreedesktopUserNotifications::removeDelivered(std::vector<std::string> identifiers) {
    service_.removeDelivered(identifiers);
    parts_.bus->run([self = shared_from_this(), identifiers = std::move(identifiers)] { self->takeAway(identifiers); });
}

void FreedesktopUserNotifications::takeAway(const std::vector<std::string>& identifiers) {
    for (const std::string& identifier : identifiers) {
        if (const auto shown = find(identifier); shown != shown_.end()) {
            server_->close(shown->id);
            forget(shown);
        }
        for (Pending& pending : pending_) {
            pending.cancelled = pending.cancelled || pending.notification.request.identifier == identifier;
        }
    }
}

void FreedesktopUserNotifications::invoked(std::uint32_t id, const std::string& key) {
    const auto shown = find(id);
    if (shown == shown_.end()) {
        return; // another program's
    }
    const auto action = std::find_if(shown->actions.begin(), shown->actions.end(),
                                     [&](const DesktopAction& each) { return each.key == key; });
    if (action == shown->actions.end()) {
        return;
    }
    if (action->key == expandKey) {
        shown->expanded = true;
        door_.onMain(
            [self = shared_from_this(), notification = shown->notification] { self->parts_.expand(notification); });
        return;
    }
    platform::NotificationResponse response{shown->notification, action->identifier, shown->activationToken};
    // Most services take it away by themselves, and say so; nobody listens to that any more.
    server_->close(id);
    forget(shown);
    answered(std::move(response));
}

void FreedesktopUserNotifications::activationToken(std::uint32_t id, const std::string& token) {
    const auto shown = find(id);
    if (shown != shown_.end() && token.size() <= maximumTokenBytes) {
        shown->activationToken = token;
    }
}

void FreedesktopUserNotifications::closed(std::uint32_t id, std::uint32_t reason) {
    const auto shown = find(id);
    if (shown == shown_.end()) {
        return;
    }
    const bool dismissed = reason == NotificationServer::dismissedByUser && !shown->expanded;
    platform::NotificationResponse response{shown->notification, platform::dismissActionIdentifier};
    forget(shown);
    if (dismissed) {
        answered(std::move(response));
    }
}

void FreedesktopUserNotifications::answered(platform::NotificationResponse response) {
    if (parts_.comeToFront && response.actionIdentifier == platform::defaultActionIdentifier) {
        door_.onMain(
            [self = shared_from_this(), token = response.activationToken] { self->parts_.comeToFront(token); });
    }
    door_.tell(shared_from_this(), std::move(response));
}

void FreedesktopUserNotifications::came(const std::string& server) {
    serverProcess_ = server;
    if (!parts_.kept) {
        return;
    }
    auto left = parts_.kept->takeUp(server);
    for (const platform::Notification& notification : left.gone) {
        removeFiles(notification);
    }
    for (auto& each : left.up) {
        shown_.push_back({std::move(each), false, true});
    }
}

void FreedesktopUserNotifications::gone() {
    serverProcess_.clear();
    while (!shown_.empty()) {
        forget(shown_.begin());
    }
}

std::vector<FreedesktopUserNotifications::Shown>::iterator FreedesktopUserNotifications::find(std::uint32_t id) {
    return std::find_if(shown_.begin(), shown_.end(), [&](const Shown& each) { return each.id == id; });
}

std::vector<FreedesktopUserNotifications::Shown>::iterator
FreedesktopUserNotifications::find(const std::string& identifier) {
    return std::find_if(shown_.begin(), shown_.end(),
                        [&](const Shown& each) { return each.notification.request.identifier == identifier; });
}

void FreedesktopUserNotifications::forget(std::vector<Shown>::iterator shown, const platform::Notification* successor) {
    removeFiles(shown->notification, successor);
    if (parts_.kept) {
        parts_.kept->remove(shown->id);
    }
    shown_.erase(shown);
}

void FreedesktopUserNotifications::removeFiles(const platform::Notification& of, const platform::Notification* kept) {
    for (const platform::NotificationAttachment& attachment : of.request.content.attachments) {
        const bool needed =
            kept != nullptr &&
            std::any_of(kept->request.content.attachments.begin(), kept->request.content.attachments.end(),
                        [&](const auto& other) { return other.path == attachment.path; });
        if (!needed) {
            parts_.diskQueue->async([files = parts_.attachmentFiles, path = attachment.path] { files->remove(path); });
        }
    }
}

} // namespace zentavo::desktop
