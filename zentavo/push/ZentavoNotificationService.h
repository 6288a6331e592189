#pragma once

#include <memory>
#include <optional>
#include <string>

#include "zentavo/core/Zentavo.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/NotificationServiceExtension.h"

namespace zentavo {

class ImageFetch;

/// What a host's notification-service extension is made of: supplies a sound, makes the kind of notification known that
/// the content extension draws, keeps the number on the app's icon, and attaches the push's picture. Needs no toolkit
/// and no activation.
///
/// `didReceive` waits while the picture is fetched (10 MiB and 25 seconds at most). Whatever goes wrong with the
/// picture, the notification is shown without it. An instance works on one push at a time: another one that comes
/// meanwhile ends the wait of the earlier, which is shown as far as it has come.
class ZENTAVO_EXPORT ZentavoNotificationService : public platform::NotificationServiceExtension {
public:
    /// The category of the content extension.
    static constexpr const char* contentCategory = "ZentavoNotificationContent";

    /// For an instance of its own; the shared one without it.
    explicit ZentavoNotificationService(std::shared_ptr<Zentavo> instance = nullptr);
    ~ZentavoNotificationService() override;
    ZentavoNotificationService(const ZentavoNotificationService&) = delete;
    ZentavoNotificationService& operator=(const ZentavoNotificationService&) = delete;

    /// The app group, for an extension that says it; read by nothing in the SDK.
    virtual std::optional<std::string> appGroupsId() const { return std::nullopt; }

    void didReceive(platform::NotificationRequest request, ContentHandler withContentHandler) override;
    void serviceExtensionTimeWillExpire() override;

private:
    /// The working copy of a push; also tells whether the push that is worked on is still that one.
    using Copy = std::shared_ptr<platform::NotificationContent>;

    void begin(const Copy& copy, ContentHandler handler, std::shared_ptr<ImageFetch> fetch);
    /// `change` is given the working copy. False, and no call, where that has been handed back.
    template <class Change>
    bool change(const Copy& copy, Change change);
    /// Hands back what there is, unless that has happened.
    void deliver(const Copy& copy);
    void rewrite(const Copy& copy, ImageFetch& fetch);
    void setTitleSoundAndCategory(const Copy& copy, bool categoryIsEmpty);
    void applyBadge(const Copy& copy, const Map& rule);
    void attachImage(const Copy& copy, ImageFetch& fetch, const std::string& urlText);

    const std::shared_ptr<Zentavo> sdk_;
    Mutex mutex_;
    // All of them from the arrival of a push until it is handed back, and otherwise none.
    ContentHandler contentHandler ZENTAVO_GUARDED_BY(mutex_);
    std::optional<platform::NotificationContent> originalContent ZENTAVO_GUARDED_BY(mutex_);
    Copy mutableContent ZENTAVO_GUARDED_BY(mutex_);
    /// What is handed back: the working copy, however far it has come.
    Copy bestAttemptContent ZENTAVO_GUARDED_BY(mutex_);
    std::shared_ptr<ImageFetch> imageFetch_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo
