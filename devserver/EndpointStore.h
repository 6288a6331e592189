#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/Database.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::devserver {

/// Who has registered with the distributor for pushes, and at which endpoint they arrive. In an SQLite database, so that
/// an endpoint may outlive the server. For any thread.
class EndpointStore {
public:
    static constexpr std::size_t maximum = 1'000;

    struct Registration {
        /// The app's own name for it; no two apps share one.
        std::string token;
        /// The app's name on the bus.
        std::string service;
        std::string description;
        /// The sender's public key that the app wants pushes to be signed with; empty for none. Kept, not enforced.
        std::string vapid;
        /// Of the interface by which it came, 1 or 2.
        int version = 1;
        /// What its endpoint's URL ends in; 128 bits of chance, so that to know it is to be allowed to push.
        std::string id = {};
    };

    /// An empty path means memory.
    static Result<std::unique_ptr<EndpointStore>> open(const std::string& path);

    /// Keeps it, `id` aside: one that is there keeps its endpoint, another gets a new one. The error says why not: the token
    /// is another app's, or the store is full.
    Result<Registration> add(Registration registration);
    std::optional<Registration> find(std::string_view token) const;
    std::optional<Registration> at(std::string_view id) const;
    /// The registration with a new endpoint; none when there is no such token.
    std::optional<Registration> renew(std::string_view token);
    bool remove(std::string_view token);
    /// In the order of registering.
    std::vector<Registration> all() const;

private:
    explicit EndpointStore(std::unique_ptr<Database> database) : database_(std::move(database)) {}
    std::vector<Registration> where(std::string_view condition, std::string_view value) const ZENTAVO_REQUIRES(mutex_);

    mutable Mutex mutex_;
    const std::unique_ptr<Database> database_;
};

} // namespace zentavo::devserver
