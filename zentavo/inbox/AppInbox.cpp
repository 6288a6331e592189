#include "zentavo/inbox/AppInbox.h"

#include <atomic>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/DecimalInteger.h"
#include "zentavo/inbox/AppInboxOperation.h"

namespace zentavo {

namespace {

std::atomic<std::int64_t> sharedPageLimit = 5;

} // namespace

std::int64_t AppInbox::pageLimit() noexcept { return sharedPageLimit; }
void AppInbox::setPageLimit(std::int64_t pageLimit) noexcept { sharedPageLimit = pageLimit; }

AppInbox::AppInbox(std::string destinationId, std::string audienceType, bool log)
    : AppInbox(*Zentavo::shared(), std::move(destinationId), std::move(audienceType), log) {}

AppInbox::AppInbox(const Zentavo& instance, std::string destinationId, std::string audienceType, bool)
    : state_(instance.state()), destinationId_(std::move(destinationId)),
      appInboxOperation_(
          std::make_shared<AppInboxOperation>(std::make_shared<HTTPClient>(state_->platform, state_->log))),
      message_(std::make_shared<const std::vector<InboxItem>>()),
      lookupId_(audienceType == "customer" ? instance.getCustomerId() : instance.getUid()),
      lookupType_(std::move(audienceType)) {}

AppInbox::~AppInbox() = default;

std::vector<InboxItem> AppInbox::getMessage() const {
    std::shared_ptr<const std::vector<InboxItem>> messages;
    {
        MutexLock lock(mutex_);
        messages = message_;
    }
    return *messages;
}

std::shared_ptr<const std::vector<InboxItem>> AppInbox::keepMessages(std::vector<InboxItem> messages) {
    auto kept = std::make_shared<const std::vector<InboxItem>>(std::move(messages));
    auto earlier = kept; // released outside the lock
    MutexLock lock(mutex_);
    message_.swap(earlier);
    lock.unlock();
    return kept;
}

std::optional<std::int64_t> AppInbox::numUnreadMessage() const {
    MutexLock lock(mutex_);
    return numUnreadMessage_;
}

void AppInbox::keepUnreadCount(std::int64_t count) {
    MutexLock lock(mutex_);
    numUnreadMessage_ = count;
}

std::string AppInbox::lookupId() const {
    MutexLock lock(mutex_);
    return lookupId_;
}

void AppInbox::setLookupId(std::string lookupId) {
    MutexLock lock(mutex_);
    lookupId_ = std::move(lookupId);
}

std::string AppInbox::lookupType() const {
    MutexLock lock(mutex_);
    return lookupType_;
}

void AppInbox::setLookupType(std::string lookupType) {
    MutexLock lock(mutex_);
    lookupType_ = std::move(lookupType);
}

std::shared_ptr<AppInboxDelegate> AppInbox::delegate() const {
    MutexLock lock(mutex_);
    return delegate_.lock();
}

void AppInbox::setDelegate(std::weak_ptr<AppInboxDelegate> delegate) {
    MutexLock lock(mutex_);
    delegate_.swap(delegate);
    lock.unlock();
}

std::string AppInbox::realtimeChannel() const {
    const std::string portal = portalId().value_or("");
    MutexLock lock(mutex_);
    return "appInbox_" + portal + "_" + destinationId_ + "_" + lookupId_ + "_" + lookupType_;
}

AppInbox::Addressee AppInbox::addressee() const {
    const std::int64_t destination = decimalInteger(destinationId_).value_or(0);
    MutexLock lock(mutex_);
    return {lookupId_, lookupType_, destination};
}

std::optional<std::string> AppInbox::portalId() const {
    const auto account = state_->account();
    return account->configuration ? std::optional(account->configuration->portalId) : std::nullopt;
}

std::shared_ptr<BaseOperation> AppInbox::baseOperation() {
    MutexLock lock(mutex_);
    if (!baseOperation_) {
        baseOperation_ = std::make_shared<BaseOperation>(std::make_shared<HTTPClient>(state_->platform, state_->log));
    }
    return baseOperation_;
}

} // namespace zentavo
