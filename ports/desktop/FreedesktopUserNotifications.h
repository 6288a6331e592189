#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ports/desktop/DelegateDoor.h"
#include "ports/desktop/LauncherBadge.h"
#include "ports/desktop/NotificationServer.h"
#include "ports/desktop/NotificationServiceClient.h"
#include "ports/desktop/NotificationSuite.h"
#include "ports/desktop/ShownNotifications.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/platform/AttachmentFiles.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/SystemLog.h"
#include "zentavo/platform/UserNotifications.h"

namespace zentavo::desktop {

/// The notification centre over org.freedesktop.Notifications. Any thread; completions are called on the bus's thread, the
/// delegate on the main queue.
///
/// Notifications are shown one after the other, in the order in which they were added. With one that is added its
/// attachments' files become ours: they are removed when it is gone from the screen, or could not be shown. What is up
/// when the process ends stays up; a click on it is told if the next process is there by then and knows it (`Parts::kept`).
class ZENTAVO_EXPORT FreedesktopUserNotifications final
    : public platform::UserNotifications,
      public std::enable_shared_from_this<FreedesktopUserNotifications> {
public:
    /// Of more that are up, the oldest are taken away; of more that wait to be shown, the newest are refused.
    static constexpr std::size_t maximumShown = 128;
    static constexpr std::size_t maximumPending = 128;
    /// Longer tokens are none.
    static constexpr std::size_t maximumTokenBytes = 1'024;
    /// How long a delegate may think; then everything is shown.
    static constexpr std::chrono::milliseconds presentationTimeout{5'000};

    /// What it is made of; of the functions, each may be empty.
    struct Parts {
        std::shared_ptr<SessionBus> bus;
        std::shared_ptr<platform::MainQueue> mainQueue;
        /// Waits for the disk in our place, to remove files.
        std::shared_ptr<platform::DispatchQueue> diskQueue;
        std::shared_ptr<platform::AttachmentFiles> attachmentFiles;
        AppOnDesktop app;
        /// The bus name of the extension that shows notifications as well, where this is not it.
        std::string notificationService = {};
        /// What the app and its extension know together; without it, this process keeps it to itself.
        std::shared_ptr<NotificationSuite> suite = {};
        /// Where what is shown is kept for the next process; without it, that knows nothing of it.
        std::shared_ptr<ShownNotifications> kept = {};
        /// Whether the delegate is asked how to show a notification: the app is in front. On the main queue.
        std::function<bool()> isInFront = {};
        /// The user has opened a notification, and wants to see the app. On the main queue, before the delegate is told.
        std::function<void(const std::string& activationToken)> comeToFront = {};
        /// The user wants to see all of a rich notification. On the main queue. Without it there is no button for it.
        std::function<void(platform::Notification)> expand = {};
        /// Whether that could be done now; without it, always. On the bus's thread.
        std::function<bool()> canExpand = {};
    };
    static std::shared_ptr<FreedesktopUserNotifications> make(Parts parts);

    void settings(std::function<void(platform::AuthorizationStatus)> completion) override;
    void requestAuthorization(std::uint32_t options,
                              std::function<void(bool, std::optional<std::string>)> completion) override;
    void setDelegate(std::weak_ptr<platform::UserNotificationDelegate> delegate) override;
    void add(platform::NotificationRequest request,
             std::function<void(std::optional<std::string>)> completion) override;
    void delivered(std::function<void(std::vector<platform::Notification>)> completion) override;
    void removeDelivered(std::vector<std::string> identifiers) override;
    void addCategory(platform::NotificationCategory category) override;
    void categories(std::function<void(std::vector<platform::NotificationCategory>)> completion) override;
    void setBadgeCount(std::int64_t count) override;

    /// The user answered a notification somewhere else, in another program or window of the app: takes it away where it is
    /// up here, and tells the delegate. A notification that was answered before is answered again: its window may have
    /// stayed open behind a click.
    void respond(platform::NotificationResponse response);
    /// How a notification is to be shown now: everything where the app is not in front.
    void presentation(const platform::Notification& notification, std::function<void(std::uint32_t)> completion);
    void setMainQueue(std::shared_ptr<platform::MainQueue> mainQueue) { door_.setMainQueue(std::move(mainQueue)); }
    /// What this process itself shows, on the bus's thread.
    void deliveredHere(std::function<void(std::vector<platform::Notification>)> completion);
    /// The attachments' files of all that is up or may be, on the bus's thread.
    void files(std::function<void(std::set<std::string> paths)> completion);

private:
    struct Pending {
        std::uint64_t number = 0;
        platform::Notification notification;
        std::function<void(std::optional<std::string>)> completion;
        bool cancelled = false; ///< taken away before it was there
    };
    struct Shown : ShownNotifications::Entry {
        bool expanded = false; ///< the user sees it elsewhere: its end here is no answer
        bool earlier = false;  ///< a process before this one has shown it, and nobody knows whether it is up still
        std::string activationToken = {}; ///< of the click that comes next
    };

    explicit FreedesktopUserNotifications(Parts parts);
    /// A function that calls `member` on this, where it still is.
    template <class... Arguments>
    auto weakly(void (FreedesktopUserNotifications::*member)(Arguments...));

    // All below on the bus's thread.
    void enqueue(Pending pending);
    void begin();
    void present(std::uint64_t number, std::uint32_t options);
    void show(std::uint32_t options, const ServerCapabilities& capabilities);
    void shown(std::uint32_t id, std::vector<DesktopAction> actions);
    void failed(const Error& error);
    void finish(std::optional<std::string> error);

    void invoked(std::uint32_t id, const std::string& key);
    void activationToken(std::uint32_t id, const std::string& token);
    void closed(std::uint32_t id, std::uint32_t reason);
    void answered(platform::NotificationResponse response);
    void came(const std::string& server);
    void gone();
    void takeAway(const std::vector<std::string>& identifiers);
    std::vector<Shown>::iterator find(std::uint32_t id);
    std::vector<Shown>::iterator find(const std::string& identifier);
    /// `successor` has taken its place, and may need its files.
    void forget(std::vector<Shown>::iterator shown, const platform::Notification* successor = nullptr);
    /// This process's, and those that the other one has registered.
    std::vector<platform::NotificationCategory> allCategories();
    /// Those that `kept` does not need.
    void removeFiles(const platform::Notification& of, const platform::Notification* kept = nullptr);

    const Parts parts_;
    const std::shared_ptr<NotificationServer> server_;
    const LauncherBadge badge_;
    const NotificationServiceClient service_;
    DelegateDoor door_;

    Mutex mutex_;
    std::vector<platform::NotificationCategory> categories_ ZENTAVO_GUARDED_BY(mutex_);

    std::string serverProcess_;   ///< that shows what is shown; empty while there is none
    std::deque<Pending> pending_; ///< the first is being shown
    std::uint64_t lastNumber_ = 0;
    std::uint64_t presenting_ = 0; ///< the last that it was decided of how it is shown
    std::vector<Shown> shown_;     ///< in the order of arrival
};

} // namespace zentavo::desktop
