#include "ports/desktop/RemoteNotifications.h"

#include <utility>

#include "zentavo/foundation/Fault.h"

namespace zentavo::desktop {

const std::shared_ptr<RemoteNotifications>& RemoteNotifications::shared() {
    // For ever: the bus's thread may bring news while the process exits.
    static const auto& only = *new auto(std::make_shared<RemoteNotifications>());
    return only;
}

void RemoteNotifications::setHandlers(RemoteNotificationsHandlers handlers) {
    MutexLock lock(mutex_);
    std::swap(handlers_, handlers);
    lock.unlock(); // the earlier ones are released outside the lock
    tellLater();
}

void RemoteNotifications::setMainQueue(std::shared_ptr<platform::MainQueue> mainQueue) {
    MutexLock lock(mutex_);
    mainQueue_.swap(mainQueue);
    lock.unlock();
    tellLater();
}

void RemoteNotifications::arrived(News news) {
    MutexLock lock(mutex_);
    news_ = std::move(news);
    lock.unlock();
    tellLater();
}

void RemoteNotifications::tellLater() {
    MutexLock lock(mutex_);
    const auto queue = news_ ? mainQueue_ : nullptr;
    lock.unlock();
    if (queue) {
        queue->async([self = shared_from_this()] { entryPoint("remote notifications", [&] { self->tell(); }); });
    }
}

void RemoteNotifications::tell() {
    MutexLock lock(mutex_);
    if (!news_ || !(news_->isToken ? handlers_.onToken : handlers_.onFailure)) {
        return;
    }
    const News news = *std::exchange(news_, std::nullopt);
    const auto handler = news.isToken ? handlers_.onToken : handlers_.onFailure;
    lock.unlock();
    handler(news.text);
}

} // namespace zentavo::desktop
