#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/core/Zentavo.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/inbox/AppInboxDelegate.h"
#include "zentavo/inbox/Catalog.h"
#include "zentavo/inbox/InboxItem.h"
#include "zentavo/inbox/ModifyAction.h"

namespace zentavo {

class AppInboxOperation;
class BaseOperation;

/// The messages that the platform has for one user at one destination. A host makes it with `Zentavo::appInboxInit` and
/// finds it under `Zentavo::appInbox`. Each call is one request; nothing is stored on the device.
///
/// Threads: any thread may call; nothing waits for the network. Completions run on the SDK's worker, never under a lock.
/// Lifetime: held by `std::shared_ptr`. Requests hold the inbox weakly: what comes back to one that is gone is dropped,
/// unless a call says otherwise.
/// Errors: a completion is not called when anything fails. Programming errors (a portal id that is no number; see each
/// call) stop the process unless `setFaultPolicy` says otherwise.
class ZENTAVO_EXPORT AppInbox : public std::enable_shared_from_this<AppInbox> {
public:
    /// An inbox of the shared instance. `audienceType` says whose: "customer" for the stored customer, anything else for
    /// the visitor. Whom that means is settled here; a later login does not change it, `setLookupId` does.
    /// `destinationId` is a number in decimal text; text that is none counts as 0. `log` is accepted and ignored.
    AppInbox(std::string destinationId, std::string audienceType, bool log);
    /// An inbox of an instance of its own.
    AppInbox(const Zentavo& instance, std::string destinationId, std::string audienceType, bool log);
    ~AppInbox();
    AppInbox(const AppInbox&) = delete;
    AppInbox& operator=(const AppInbox&) = delete;

    // --- Calls -----------------------------------------------------------------------------------------------------

    /// Asks for a page of messages, those of `catalogId` only unless it is empty. A page that cannot be read leaves a
    /// line on standard output and changes nothing; a portal id that is no number counts as 0. An answer of no bytes is a
    /// programming error.
    void forceFetchInboxItem(std::vector<std::string> catalogId, std::int64_t page,
                             std::function<void(std::vector<InboxItem> items)> completion);
    /// Asks for all catalogs. Without a portal id nothing is sent.
    void fetchAllCatalog(std::function<void(std::vector<Catalog> catalogs)> completion);
    /// Asks how many messages are unread, and keeps the number. The inbox must live until the answer is there.
    void countUnreadMessage(std::function<void(std::int64_t count)> completion);
    /// Asks for one message, whatever its destination. Without a portal id nothing is sent. Answered also when the inbox
    /// is gone.
    void getMessageById(const std::string& messageId, std::function<void(InboxItem item)> completion);
    /// Marks messages as read or unread, or removes them, at the service; `getMessage` stays as it is.
    void modifyMessageStatus(const std::vector<std::string>& ids, ModifyAction action);
    /// Marks every message as read at the service; then `numUnreadMessage` is 0.
    void markAllAsRead();

    // --- State -----------------------------------------------------------------------------------------------------

    /// How many messages a page has, for all inboxes: 5 unless set otherwise.
    static std::int64_t pageLimit() noexcept;
    static void setPageLimit(std::int64_t pageLimit) noexcept;

    /// The messages of the last page that came.
    std::vector<InboxItem> getMessage() const;
    /// The number of unread messages as last heard; none before that.
    std::optional<std::int64_t> numUnreadMessage() const;

    /// Whose inbox it is: an id, and what kind of id.
    std::string lookupId() const;
    void setLookupId(std::string lookupId);
    std::string lookupType() const;
    void setLookupType(std::string lookupType);
    const std::string& destinationId() const noexcept { return destinationId_; }

    /// Held weakly; null when there is none or it is gone.
    std::shared_ptr<AppInboxDelegate> delegate() const;
    void setDelegate(std::weak_ptr<AppInboxDelegate> delegate);

    // --- For a delivery in real time, which does not exist yet: nothing sets these ------------------------------------

    std::vector<std::string> catalogName() const { return {}; }
    std::optional<InboxItem> pushBackMessage() const { return std::nullopt; }
    std::optional<std::string> socketCommand() const { return std::nullopt; }
    /// The name under which new messages would be announced. Nobody listens there.
    std::string realtimeChannel() const;

private:
    /// What a request says about whom it is for, taken in one step.
    struct Addressee {
        std::string lookupId;
        std::string lookupType;
        std::int64_t destinationId;
    };
    Addressee addressee() const;
    /// None before activation.
    std::optional<std::string> portalId() const;
    std::shared_ptr<BaseOperation> baseOperation();
    /// Returns what is now kept.
    std::shared_ptr<const std::vector<InboxItem>> keepMessages(std::vector<InboxItem> messages);
    void keepUnreadCount(std::int64_t count);

    const std::shared_ptr<Zentavo::State> state_;
    const std::string destinationId_;
    const std::shared_ptr<AppInboxOperation> appInboxOperation_;

    mutable Mutex mutex_;
    /// Replaced, never changed, so that a reader copies outside the lock.
    std::shared_ptr<const std::vector<InboxItem>> message_ ZENTAVO_GUARDED_BY(mutex_);
    std::optional<std::int64_t> numUnreadMessage_ ZENTAVO_GUARDED_BY(mutex_);
    std::string lookupId_ ZENTAVO_GUARDED_BY(mutex_);
    std::string lookupType_ ZENTAVO_GUARDED_BY(mutex_);
    std::weak_ptr<AppInboxDelegate> delegate_ ZENTAVO_GUARDED_BY(mutex_);
    /// Made when it is first needed.
    std::shared_ptr<BaseOperation> baseOperation_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo
