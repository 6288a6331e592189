#include "ports/memory/MemoryPlatform.h"

#include <utility>

namespace zentavo::testing {

MemoryPlatform::MemoryPlatform(const std::string& identifier, std::shared_ptr<MemoryStore> store)
    : clock(std::make_shared<ManualClock>()), queues(std::make_shared<ManualQueues>(clock)),
      systemLog(std::make_shared<RecordingSystemLog>()), console(std::make_shared<RecordingConsole>()),
      session(std::make_shared<ScriptedURLSession>()),
      preferences(std::make_shared<MemoryPreferencesProvider>(identifier, systemLog, std::move(store))),
      bundles(std::make_shared<MemoryBundles>("/memory/Main.app", identifier)),
      device(std::make_shared<MemoryDevice>()), random(std::make_shared<SeededRandom>(1)),
      calendar(std::make_shared<FixedZoneCalendar>()), keyServices(std::make_shared<MemoryKeyServices>()),
      attachmentFiles(std::make_shared<MemoryAttachmentFiles>()),
      userNotifications(std::make_shared<MemoryUserNotifications>(queues->mainQueue())),
      application(std::make_shared<MemoryApplication>()), views(std::make_shared<MemoryViews>(queues->mainQueue())),
      webViews(std::make_shared<MemoryWebViews>(queues->mainQueue())), images(std::make_shared<MemoryImages>()),
      platform_(std::make_shared<platform::Platform>(
          platform::UserInterface{queues->mainQueue(), userNotifications, application})) {
    platform_->preferences = preferences;
    platform_->bundles = bundles;
    platform_->device = device;
    platform_->urlSession = session;
    platform_->queues = queues;
    platform_->clock = clock;
    platform_->random = random;
    platform_->calendar = calendar;
    platform_->keyServices = keyServices;
    platform_->attachmentFiles = attachmentFiles;
    platform_->systemLog = systemLog;
    platform_->console = console;
}

void MemoryPlatform::attachViews(bool attached) {
    auto interface = *platform_->userInterface();
    interface.views = attached ? views : nullptr;
    interface.webViews = attached ? webViews : nullptr;
    interface.images = attached ? images : nullptr;
    platform_->attach(std::move(interface));
}

MemoryPlatform::~MemoryPlatform() {
    session->clear();
    queues->end();
}

} // namespace zentavo::testing
