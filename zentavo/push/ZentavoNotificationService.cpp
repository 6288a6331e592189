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

/// One push on its way: what came, what has become of it so far, and whom to hand that to, once.
class ZentavoNotificationService::Rewriting {
public:
    Rewriting(platform::NotificationContent content, ContentHandler handler, ImageFetch fetch)
        : originalContent(std::move(content)), imageFetch(std::move(fetch)), bestAttemptContent_(originalContent),
          contentHandler_(std::move(handler)) {}

    const platform::NotificationContent originalContent;
    ImageFetch imageFetch;

    /// `change` is given the content that will be handed back. False, and no call, where that has happened.
    template <class Change>
    bool change(Change change) {
        MutexLock lock(mutex_);
        if (delivered_) {
            return false;
        }
        change(bestAttemptContent_);
        return true;
    }

    /// Hands back what there is, unless that has happened.
    void deliver() {
        MutexLock lock(mutex_);
        if (std::exchange(delivered_, true)) {
            return;
        }
        const auto handler = std::move(contentHandler_);
        auto content = std::move(bestAttemptContent_);
        lock.unlock();
        if (handler) {
            handler(std::move(content));
        }
    }

private:
    Mutex mutex_;
    platform::NotificationContent bestAttemptContent_ ZENTAVO_GUARDED_BY(mutex_);
    ContentHandler contentHandler_ ZENTAVO_GUARDED_BY(mutex_);
    bool delivered_ ZENTAVO_GUARDED_BY(mutex_) = false;
};

ZentavoNotificationService::ZentavoNotificationService(std::shared_ptr<Zentavo> instance)
    : sdk_(instance ? std::move(instance) : Zentavo::shared()) {}

ZentavoNotificationService::~ZentavoNotificationService() = default;

void ZentavoNotificationService::didReceive(platform::NotificationRequest request, ContentHandler withContentHandler) {
    const auto rewriting = std::make_shared<Rewriting>(std::move(request.content), std::move(withContentHandler),
                                                       ImageFetch(sdk_->state()->platform->urlSession));
    MutexLock lock(mutex_);
    auto earlier = std::exchange(rewriting_, rewriting);
    lock.unlock();
    earlier.reset();

    entryPoint("didReceive", [&] {
        const Map* aps = map(rewriting->originalContent.userInfo, "aps");
        rewrite(*rewriting, aps != nullptr ? *aps : Map());
    });
    // Also after a fault that was contained: a push must not be lost.
    entryPoint("didReceive", [&] { rewriting->deliver(); });
}

void ZentavoNotificationService::serviceExtensionTimeWillExpire() {
    entryPoint("serviceExtensionTimeWillExpire", [&] {
        MutexLock lock(mutex_);
        const auto rewriting = rewriting_;
        lock.unlock();
        if (rewriting) {
            rewriting->deliver(); // before the fetch ends, so that the thread that waits for it finds this done
            rewriting->imageFetch.cancel();
        }
    });
}

void ZentavoNotificationService::rewrite(Rewriting& rewriting, const Map& aps) {
    const std::string* category = text(aps, "category");
    rewriting.change([&](platform::NotificationContent& content) {
        if (!content.sound) {
            content.sound = platform::NotificationContent::defaultSound;
        }
        if (category != nullptr && category->empty()) {
            content.categoryIdentifier = contentCategory;
        }
    });
    // The two go together on purpose: a push that names a category keeps it.
    if (category != nullptr && !category->empty()) {
        sdk_->state()->platform->userInterface()->userNotifications->addCategory({contentCategory, {}});
    }
    if (const Map* rule = map(aps, "badge")) {
        applyBadge(rewriting, *rule);
    }
    if (const std::string* url = text(aps, "urlImageString")) {
        attachImage(rewriting, *url);
    }
}

void ZentavoNotificationService::applyBadge(Rewriting& rewriting, const Map& rule) {
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
    rewriting.change([&](platform::NotificationContent& content) { content.badge = result.shown; });
}

void ZentavoNotificationService::attachImage(Rewriting& rewriting, const std::string& urlText) {
    const auto url = URL::parse(urlText);
    if (!url) {
        return;
    }
    const auto image = rewriting.imageFetch.get(*url);
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
    const bool attached = attachment && rewriting.change([&](platform::NotificationContent& content) {
        content.attachments = {*std::move(attachment)};
    });
    if (!attached && path) {
        platform.attachmentFiles->remove(*path); // nobody else knows of it
    }
}

} // namespace zentavo
