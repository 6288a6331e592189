#pragma once

#include <memory>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Application.h"
#include "zentavo/platform/AttachmentFiles.h"
#include "zentavo/platform/Bundle.h"
#include "zentavo/platform/Calendar.h"
#include "zentavo/platform/Clock.h"
#include "zentavo/platform/Device.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/Image.h"
#include "zentavo/platform/ImageView.h"
#include "zentavo/platform/KeyServices.h"
#include "zentavo/platform/Label.h"
#include "zentavo/platform/MainQueue.h"
#include "zentavo/platform/Preferences.h"
#include "zentavo/platform/Random.h"
#include "zentavo/platform/SystemLog.h"
#include "zentavo/platform/URLSession.h"
#include "zentavo/platform/UserNotifications.h"
#include "zentavo/platform/Views.h"
#include "zentavo/platform/WebView.h"

namespace zentavo::platform {

/// The answers that only a user interface can give.
struct UserInterface {
    std::shared_ptr<MainQueue> mainQueue;
    std::shared_ptr<UserNotifications> userNotifications;
    std::shared_ptr<Application> application;
    /// Null where there is no toolkit; so is `webViews` where it cannot show web pages.
    std::shared_ptr<Views> views = nullptr;
    std::shared_ptr<WebViews> webViews = nullptr;
    /// Never null where `views` is not.
    std::shared_ptr<Images> images = nullptr;
};

/// Everything that the SDK asks of a system, as one record. A port fills every member before it hands the record out;
/// from then on the members do not change. The user interface alone may be exchanged later, when a toolkit is attached.
class ZENTAVO_EXPORT Platform {
public:
    explicit Platform(UserInterface interface)
        : interface_(std::make_shared<const UserInterface>(std::move(interface))) {}

    std::shared_ptr<PreferencesProvider> preferences;
    std::shared_ptr<Bundles> bundles;
    std::shared_ptr<Device> device;
    std::shared_ptr<URLSession> urlSession;
    std::shared_ptr<DispatchQueues> queues;
    std::shared_ptr<Clock> clock;
    std::shared_ptr<Random> random;
    std::shared_ptr<Calendar> calendar;
    std::shared_ptr<KeyServices> keyServices;
    std::shared_ptr<AttachmentFiles> attachmentFiles;
    std::shared_ptr<SystemLog> systemLog;
    std::shared_ptr<Console> console;

    /// What is attached now. Ask anew for each use; any thread.
    std::shared_ptr<const UserInterface> userInterface() const {
        MutexLock lock(mutex_);
        return interface_;
    }
    /// Puts another user interface in place; blocks already posted stay where they were posted. Any thread.
    void attach(UserInterface interface) {
        auto next = std::make_shared<const UserInterface>(std::move(interface));
        MutexLock lock(mutex_);
        interface_.swap(next);
    }

private:
    mutable Mutex mutex_;
    std::shared_ptr<const UserInterface> interface_ ZENTAVO_GUARDED_BY(mutex_);
};

/// The platform of the port that the program is linked with; each port defines it once. Called for the first instance
/// of the SDK only, on the thread that first asks for it. Starts no thread, and opens no file but the main bundle's
/// information list.
ZENTAVO_EXPORT std::shared_ptr<Platform> makeDefault();

} // namespace zentavo::platform
