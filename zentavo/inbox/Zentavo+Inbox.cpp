#include "zentavo/core/Zentavo.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/inbox/AppInbox.h"

namespace zentavo {

namespace {

/// The process's inbox has its place here. Never destroyed: code that runs while the process exits still finds it.
struct InboxPlace {
    Mutex mutex;
    std::shared_ptr<AppInbox> inbox ZENTAVO_GUARDED_BY(mutex);
};

InboxPlace& inboxPlace() {
    static InboxPlace& place = *new InboxPlace;
    return place;
}

} // namespace

void Zentavo::appInboxInit(std::string destinationId, std::string audienceType) {
    entryPoint("appInboxInit", [&] {
        setAppInbox(std::make_shared<AppInbox>(*this, std::move(destinationId), std::move(audienceType), debug()));
    });
}

std::shared_ptr<AppInbox> Zentavo::appInbox() {
    InboxPlace& place = inboxPlace();
    MutexLock lock(place.mutex);
    return place.inbox;
}

void Zentavo::setAppInbox(std::shared_ptr<AppInbox> inbox) {
    InboxPlace& place = inboxPlace();
    MutexLock lock(place.mutex);
    place.inbox.swap(inbox);
    lock.unlock(); // the earlier one is released outside the lock
}

} // namespace zentavo
