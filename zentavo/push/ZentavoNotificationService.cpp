#include "zentavo/push/ZentavoNotificationService.h"

#include <utility>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/SingleLine.h"
#include "zentavo/push/BadgeRule.h"
#include "zentavo/push/ImageFetch.h"

namespace zentavo {

namespace {

/// Its name whatever kind of picture it is.
const char* const imageName = "image.jpg";

template <class Content>
const Content* member(const Map& map, std::string_view key, const Content* (Value::*as)() const noexcept) {
    const Value* value = map.find(key);
    return value != nullptr ? (value->*as)() : nullptr;
}
const std::string* text(const Map& map, std::string_view key) { return member(map, key, &Value::asString); }
const Map* map(const Map& map, std::string_view key) { return member(map, key, &Value::asMap); }

} // namespace

ZentavoNotificationService::ZentavoNotificationService(std::shared_ptr<Zentavo> instance)
    : sdk_(instance ? std::move(instance) : Zentavo::shared()) {}

ZentavoNotificationService::~ZentavoNotificationService() = default;

void ZentavoNotificationService::didReceive(platform::NotificationRequest request, ContentHandler withContentHandler) {
    const auto copy = std::make_shared<platform::NotificationContent>(std::move(request.content));
    const auto fetch = std::make_shared<ImageFetch>(sdk_->state()->platform->urlSession);
    begin(copy, std::move(withContentHandler), fetch);
    entryPoint("didReceive", [&] { rewrite(copy, *fetch); });
    // Also after a fault that was contained: a push must not be lost.
    entryPoint("didReceive", [&] { deliver(copy); });
}

void ZentavoNotificationService::serviceExtensionTimeWillExpire() {
    entryPoint("serviceExtensionTimeWillExpire", [&] {
        MutexLock lock(mutex_);
        const auto copy = bestAttemptContent;
        const auto fetch = imageFetch_;
        lock.unlock();
        if (copy) {
            deliver(copy); // before the fetch ends, so that the thread that waits for it finds this done
            fetch->cancel();
        }
    });
}

void ZentavoNotificationService::begin(const Copy& copy, ContentHandler handler, std::shared_ptr<ImageFetch> fetch) {
    platform::NotificationContent original = *copy;
    for (;;) {
        MutexLock lock(mutex_);
        if (!bestAttemptContent) {
            contentHandler = std::move(handler);
            originalContent = std::move(original);
            mutableContent = copy;
            bestAttemptContent = copy;
            imageFetch_ = std::move(fetch);
            return;
        }
        lock.unlock();
        serviceExtensionTimeWillExpire(); // for the earlier push, whose handler would be lost
    }
}

template <class Change>
bool ZentavoNotificationService::change(const Copy& copy, Change change) {
    MutexLock lock(mutex_);
    if (mutableContent != copy) {
        return false;
    }
    change(*mutableContent);
    return true;
}

void ZentavoNotificationService::deliver(const Copy& copy) {
    MutexLock lock(mutex_);
    if (bestAttemptContent != copy) {
        return;
    }
    const auto handler = std::exchange(contentHandler, nullptr);
    const auto content = std::exchange(bestAttemptContent, nullptr);
    originalContent.reset();
    mutableContent = nullptr;
    imageFetch_ = nullptr;
    lock.unlock();
    if (handler) {
        handler(std::move(*content)); // nobody else changes it any more
    }
}

void ZentavoNotificationService::setTitleSoundAndCategory(const Copy& copy, bool categoryIsEmpty) {
    MutexLock lock(mutex_);
    if (mutableContent != copy || !originalContent) {
        return;
    }
    mutableContent->title = originalContent->title;
    if (!originalContent->sound) {
        mutableContent->sound = platform::NotificationContent::defaultSound;
    }
    if (categoryIsEmpty) {
        mutableContent->categoryIdentifier = contentCategory;
    }
}

void ZentavoNotificationService::rewrite(const Copy& copy, ImageFetch& fetch) {
    Map aps; // of its own: the copy may be handed back, and moved from, at any time
    change(copy, [&](const platform::NotificationContent& content) {
        if (const Map* found = map(content.userInfo, "aps")) {
            aps = *found;
        }
    });
    const std::string* category = text(aps, "category");
    setTitleSoundAndCategory(copy, category != nullptr && category->empty());
    // The two go together on purpose: a push that names a category keeps it.
    if (category != nullptr && !category->empty()) {
        sdk_->state()->platform->userInterface()->userNotifications->addCategory({contentCategory, {}});
    }
    if (const Map* rule = map(aps, "badge")) {
        applyBadge(copy, *rule);
    }
    if (const std::string* url = text(aps, "urlImageString")) {
        attachImage(copy, fetch, *url);
    }
}

void ZentavoNotificationService::applyBadge(const Copy& copy, const Map& rule) {
    // The extension's own store: the app knows nothing of the count.
    const auto store = sdk_->state()->platform->preferences->standard();
    const std::string& key = sdk_->state()->keys.badge;
    // In one step, so that of two pushes at once both count. Where another process keeps the store busy, the step is
    // made later, and what is shown now is reckoned from what can be read.
    const auto outcome = std::make_shared<Atomic<BadgeOutcome>>(applyBadgeRule(store->object(key), rule));
    store->update(key, [outcome, rule](const std::optional<Value>& stored) {
        const BadgeOutcome result = applyBadgeRule(stored, rule);
        outcome->set(result);
        return result.stored ? std::optional<Value>(*result.stored) : stored;
    });
    const BadgeOutcome result = outcome->get();
    if (result.overflow) {
        fatalError("the badge of the app goes beyond 64 bits");
    }
    change(copy, [&](platform::NotificationContent& content) { content.badge = result.shown; });
}

void ZentavoNotificationService::attachImage(const Copy& copy, ImageFetch& fetch, const std::string& urlText) {
    const auto url = URL::parse(urlText);
    if (!url) {
        return;
    }
    const auto image = fetch.get(*url);
    if (!image) {
        sdk_->log("Error: the notification is shown without its image: " + image.error().message);
        return;
    }
    const auto& platform = *sdk_->state()->platform;
    const auto path = platform.attachmentFiles->write(platform.random->uuidText(), imageName, *image);
    auto attachment = path ? platform.attachmentFiles->attach(imageName, *path)
                           : Result<platform::NotificationAttachment>(path.error());
    if (!attachment) {
        std::string line = "error " + attachment.error().message;
        makeSingleLine(line);
        platform.console->writeLine(line);
    }
    const bool attached = attachment && change(copy, [&](platform::NotificationContent& content) {
                              content.attachments = {*std::move(attachment)};
                          });
    if (!attached && path) {
        platform.attachmentFiles->remove(*path); // nobody else knows of it
    }
}

} // namespace zentavo
