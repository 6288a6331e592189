#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "devserver/LoggedRequest.h"
#include "devserver/RequestFilter.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo::devserver {

/// The last requests, oldest first, within bounds of number and memory; what had to go is counted. For any thread.
class RequestLog {
public:
    using Shared = std::shared_ptr<const LoggedRequest>;
    using Deadline = std::chrono::steady_clock::time_point;

    struct Bounds {
        std::size_t requests = 10'000;
        std::size_t bytes = 64U << 20U;
    };
    struct Counters {
        std::size_t kept = 0;
        std::size_t bytes = 0;
        /// Since the start or the last `clear`.
        std::uint64_t total = 0;
        std::uint64_t dropped = 0;
        std::uint64_t withProblems = 0;
    };
    /// Where somebody who follows the log has come to.
    struct Position {
        std::uint64_t number = 0;
        /// Counts the calls of `clear`.
        std::uint64_t clearings = 0;
    };
    struct News {
        std::vector<Shared> requests;
        Position position;
        /// Requests that came but were passed over to keep up.
        std::uint64_t skipped = 0;
        /// The log was cleared since the position asked for.
        bool cleared = false;
    };

    RequestLog() : RequestLog(Bounds{}) {}
    explicit RequestLog(Bounds bounds) : bounds_(bounds) {}

    /// Gives the request its number and keeps it. A request heavier than the whole log is kept alone.
    Shared add(LoggedRequest request);
    /// Forgets all requests and counters; numbers go on.
    void clear();
    /// Ends all waiting, for good.
    void close();

    Shared find(std::uint64_t number) const;
    /// The newest `limit` of those that match.
    std::vector<Shared> select(const RequestFilter& filter, std::size_t limit) const;
    Counters counters() const;
    Position end() const;

    /// Waits until `count` kept requests match, the deadline has passed or the log is closed. True in the first case.
    bool waitFor(const RequestFilter& filter, std::size_t count, Deadline deadline) const;
    /// Whatever is newer than `from`; of many new requests the newest `limit`.
    News newsSince(Position from, std::size_t limit) const;

private:
    const Bounds bounds_;
    mutable Mutex mutex_;
    mutable ConditionVariable changed_;
    std::deque<Shared> requests_ ZENTAVO_GUARDED_BY(mutex_);
    std::size_t bytes_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::uint64_t lastNumber_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::uint64_t clearings_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    Counters counters_ ZENTAVO_GUARDED_BY(mutex_);
    bool closed_ ZENTAVO_GUARDED_BY(mutex_) = false;
};

} // namespace zentavo::devserver
