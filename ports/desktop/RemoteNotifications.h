#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ports/desktop/DesktopAnswers.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/MainQueue.h"

namespace zentavo::desktop {

/// Brings what a registration for pushes came to before the host, on its main queue. While there is no host to tell or no
/// queue to tell it on, the latest news waits. Any thread; held by `std::shared_ptr`.
class RemoteNotifications : public std::enable_shared_from_this<RemoteNotifications> {
public:
    /// The process's: a host may set its handlers before anything is attached.
    static const std::shared_ptr<RemoteNotifications>& shared();

    void setHandlers(RemoteNotificationsHandlers handlers);
    void setMainQueue(std::shared_ptr<platform::MainQueue> mainQueue);

    void tokenChanged(std::string token) { arrived({true, std::move(token)}); }
    void failed(std::string reason) { arrived({false, std::move(reason)}); }

private:
    struct News {
        bool isToken = false;
        std::string text;
    };

    void arrived(News news);
    void tellLater();
    void tell();

    Mutex mutex_;
    RemoteNotificationsHandlers handlers_ ZENTAVO_GUARDED_BY(mutex_);
    std::shared_ptr<platform::MainQueue> mainQueue_ ZENTAVO_GUARDED_BY(mutex_);
    std::optional<News> news_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::desktop
