#pragma once

#include <memory>
#include <optional>
#include <string>

#include "zentavo/core/Zentavo.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/NotificationServiceExtension.h"

namespace zentavo {

/// What a host's notification-service extension is made of: supplies a sound, makes the kind of notification known that
/// the content extension draws, keeps the number on the app's icon, and attaches the push's picture. Needs no toolkit
/// and no activation.
///
/// `didReceive` waits while the picture is fetched (10 MiB and 25 seconds at most). Whatever goes wrong with the
/// picture, the notification is shown without it.
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
    class Rewriting;

    void rewrite(Rewriting& rewriting, const Map& aps);
    void applyBadge(Rewriting& rewriting, const Map& rule);
    void attachImage(Rewriting& rewriting, const std::string& urlText);

    const std::shared_ptr<Zentavo> sdk_;
    Mutex mutex_;
    /// The last push that came; kept for the expiry.
    std::shared_ptr<Rewriting> rewriting_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo
