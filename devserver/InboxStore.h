#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/Database.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::devserver {

/// A user as the inbox service knows one: an id and what kind of id ("customer", "visitor", …).
struct InboxUser {
    std::string lookupType;
    std::string lookupId;
};

/// The state that a message has for one user.
enum class InboxStatus : std::int64_t { unread = 1, read = 2, removed = 3 };

/// Messages, catalogs, and what each user has done with each message. A message is addressed to a user or, with "*" for
/// the id or the type, to many; its state is each user's own. In an SQLite database, so that it may outlive the server.
/// For any thread.
class InboxStore {
public:
    static constexpr std::int64_t maximumMessages = 10'000;

    /// Stands for every id or type of user.
    static constexpr std::string_view everybody = "*";

    struct Message {
        std::string id;
        /// To whom.
        InboxUser user;
        std::int64_t destination = 0;
        std::vector<std::string> catalogs;
        /// The item as it is answered, without its id and what depends on the user.
        Map item;
    };
    struct PageRequest {
        InboxUser user;
        std::int64_t destination = 0;
        /// Messages under any of these; all messages when it is empty.
        std::vector<std::string> catalogs;
        /// Counts from 1.
        std::int64_t page = 1;
        std::int64_t limit = 5;
    };

    /// An empty path means memory.
    static Result<std::unique_ptr<InboxStore>> open(const std::string& path);

    bool isEmpty() const;
    bool hasCatalog(std::string_view id) const;
    bool hasMessage(std::string_view id) const;
    /// Forgets everything.
    void clear();
    /// A catalog that is there gets the new name.
    void addCatalog(std::string_view id, std::string_view name);
    /// False when the id is taken or the store is full.
    bool add(const Message& message);

    /// {"catalogId": …, "catalogName": …} each, in the order of adding.
    List catalogs() const;
    /// Items for one user, the newest first, without those that the user has removed.
    List page(const PageRequest& request) const;
    /// One item, whatever its destination; none when it is not for this user or is removed.
    std::optional<Map> item(const InboxUser& user, std::string_view id) const;
    std::int64_t unreadCount(const InboxUser& user, std::int64_t destination) const;
    /// True when the user has this message at this destination and has not removed it.
    bool canSee(const InboxUser& user, std::int64_t destination, std::string_view id) const;
    void setStatus(const InboxUser& user, const std::vector<std::string>& ids, InboxStatus status);
    void markAllAsRead(const InboxUser& user, std::int64_t destination);

    /// Everything: each message with its addressee and with "states", a list of what users did with it.
    List everything() const;

private:
    explicit InboxStore(std::unique_ptr<Database> database) : database_(std::move(database)) {}
    std::int64_t messageCount() const ZENTAVO_REQUIRES(mutex_);
    bool exists(std::string_view sql, std::string_view id) const;

    mutable Mutex mutex_;
    const std::unique_ptr<Database> database_;
};

} // namespace zentavo::devserver
