#include "ports/desktop/NotificationService.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <set>
#include <utility>

#include <pthread.h>

#include "ports/desktop/AppOnDesktop.h"
#include "ports/desktop/AttachmentLedger.h"
#include "ports/desktop/BusNames.h"
#include "ports/desktop/ContentExtension.h"
#include "ports/desktop/ForwardingDelegate.h"
#include "ports/desktop/FreedesktopUserNotifications.h"
#include "ports/desktop/NotificationServiceHost.h"
#include "ports/desktop/SessionBus.h"

namespace zentavo::desktop {

namespace {

/// The signals that end the process, kept from this thread and all that it makes from now on, for `wait`. They stay so:
/// one that comes late must not kill a process that is about to end well.
class EndSignals {
public:
    EndSignals() : main_(pthread_self()) {
        sigemptyset(&signals_);
        for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
            sigaddset(&signals_, signal);
        }
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    }

    void wait() const {
        int signal = 0;
        sigwait(&signals_, &signal);
    }
    /// Ends `wait` as a signal would. Any thread.
    void send() const { pthread_kill(main_, SIGTERM); }

private:
    const pthread_t main_;
    sigset_t signals_{};
};

/// How it ended, told from another thread.
struct End {
    EndSignals signals;
    std::atomic<bool> reached = false;
    std::atomic<int> status = 0;
};

/// The bundle of the app, which the extension's stands in; the extension's own where it stands elsewhere.
std::shared_ptr<const platform::Bundle> appBundle(platform::Bundles& bundles, const std::string& identifier) {
    std::filesystem::path folder = bundles.main()->path();
    for (int levels = 0; levels < 3 && folder.has_relative_path(); ++levels) {
        folder = folder.parent_path();
        const auto bundle = bundles.open(folder.string());
        if (bundle && bundle->identifier() == identifier) {
            return bundle;
        }
    }
    return bundles.main();
}

} // namespace

int runNotificationService(const std::shared_ptr<platform::Platform>& platform,
                           std::function<std::shared_ptr<platform::NotificationServiceExtension>()> makeExtension,
                           NotificationServiceOptions options) {
    const auto names = BusNames::of(*platform->bundles->main());
    const auto& log = platform->systemLog;
    if (!names || platform->bundles->main()->identifier() != names->notificationService) {
        log->write(platform::LogLevel::error,
                   "A notification service's bundle identifier is its app's with \".NotificationService\"");
        return 1;
    }
    const auto end = std::make_shared<End>();
    const auto bus = std::make_shared<SessionBus>();
    const auto app = AppOnDesktop::of(*appBundle(*platform->bundles, names->app));
    const auto content = ContentExtension::make(bus, names->notificationContent, log);
    const auto disk = platform->queues->make("zentavo.attachments", platform::QueueKind::serial);
    const auto ledger = std::make_shared<AttachmentLedger>(platform->attachmentFiles, platform->preferences->standard(),
                                                           *platform->random);
    platform->attachmentFiles = ledger; // for the extension, which writes them
    const auto expanding = std::make_shared<std::weak_ptr<FreedesktopUserNotifications>>();
    const auto centre = FreedesktopUserNotifications::make(
        {.bus = bus,
         .mainQueue = platform->userInterface()->mainQueue,
         .diskQueue = disk,
         .attachmentFiles = ledger,
         .app = app,
         .suite = std::make_shared<NotificationSuite>(platform->preferences, names->app,
                                                      NotificationSuite::Side::notificationService),
         .kept = std::make_shared<ShownNotifications>(platform->preferences),
         // The app knows whether it is in front, and is asked each time.
         .isInFront = [] { return true; },
         .expand =
             [content, expanding](const platform::Notification& notification) {
                 // What cannot be shown in full is at least opened: the user has asked for it.
                 content->show(notification, [expanding, notification] {
                     if (const auto shows = expanding->lock()) {
                         shows->respond({notification});
                     }
                 });
             },
         .canExpand = [content] { return content->isThere(); }});
    *expanding = centre; // before anything can be shown
    const auto delegate = ForwardingDelegate::make(bus, names->app, *platform);
    centre->setDelegate(delegate);
    const platform::UserInterface before = *platform->userInterface();
    platform::UserInterface interface = before;
    interface.userNotifications = centre;
    platform->attach(interface);

    const auto host = NotificationServiceHost::make(
        platform, *bus,
        {*names, options.description.empty() ? app.name : std::move(options.description), std::move(options.vapid)},
        std::move(makeExtension),
        // The bus keeps these, and what it keeps must not keep the bus.
        {.respond =
             [weak = std::weak_ptr(centre)](platform::NotificationResponse response) {
                 if (const auto shows = weak.lock()) {
                     shows->respond(std::move(response));
                 }
             },
         .appIsReady =
             [weak = std::weak_ptr(delegate)] {
                 if (const auto tells = weak.lock()) {
                     tells->tellNow();
                 }
             },
         .busy =
             [weak = std::weak_ptr(delegate)] {
                 const auto tells = weak.lock();
                 return tells && tells->waiting() > 0;
             },
         .alone =
             [weak = std::weak_ptr(centre), ledger, disk] {
                 if (const auto shows = weak.lock()) {
                     shows->files([ledger, disk](const std::set<std::string>& inUse) {
                         disk->async([ledger, inUse] { ledger->sweep(inUse); });
                     });
                 }
             },
         .ended =
             [end](bool name) {
                 end->status = name ? 0 : 1;
                 end->reached = true;
                 end->signals.send();
             }});
    host->start();
    end->signals.wait();
    if (!end->reached) {     // a signal came from outside
        delegate->tellNow(); // one that is sent now arrives, though nobody waits for what comes of it
        host->end();
        while (!end->reached) {
            end->signals.wait();
        }
    }
    if (const std::size_t lost = delegate->waiting(); lost > 0) {
        log->write(platform::LogLevel::warning,
                   "The app may not have been told of " + std::to_string(lost) + " answers of the user");
    }
    platform->attach(before); // the bus ends with the last who holds it, and says what it has still to say
    return end->status;
}

} // namespace zentavo::desktop
