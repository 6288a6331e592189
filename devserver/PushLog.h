#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::devserver {

/// The last pushes, what became of each at each device, and the clicks and ratings that were heard of since. For any
/// thread.
class PushLog {
public:
    static constexpr std::size_t mostKept = 500;
    /// Of one push; of more devices and ratings the number is kept.
    static constexpr std::size_t mostDevices = 50;
    static constexpr std::size_t mostRatings = 50;

    struct Device {
        /// Empty where nobody knows whose endpoint it is.
        std::string uid;
        std::string endpoint;
        bool encrypted = false;
        /// As they went out.
        std::size_t bytes = 0;
        /// Of the endpoint's answer; 0 where nothing went out.
        int status = 0;
        /// Why it was not delivered; empty when it was.
        std::string reason;

        Map map() const;
    };

    /// A number for a push that is about to be sent; they count from 1.
    std::uint64_t next();
    /// A name for it that no other push has, also not one of an earlier run: "rating-1763758512345-7". Of `name`, letters and
    /// digits stay.
    std::string idFor(std::string_view name, std::uint64_t number) const;

    /// Keeps the push, so that what is heard of it while it is on its way has a place. `id` is that of `idFor`, `source` the
    /// name of its file, or what it is instead; `body` is searched for what the app will call it.
    void sent(std::uint64_t number, const std::string& id, std::string_view source, std::string_view body);
    /// Keeps what became of it and returns the whole of it.
    Map arrived(std::uint64_t number, const std::vector<Device>& devices);

    /// A tracking URL was asked for, with the push's id or its payload's. False when no such push is kept.
    bool clicked(std::string_view id);
    /// The event submit_rating came, with these properties; it goes to the newest push that has all their ids.
    void rated(const Map& properties);

    void clear();
    /// The newest first.
    List list() const;
    /// Another number after each change.
    std::int64_t changes() const;

private:
    struct Entry {
        std::uint64_t number = 0;
        std::chrono::system_clock::time_point time;
        std::string id;
        std::string source;
        /// The payload's.
        std::string pushId;
        std::string shape;
        /// What a rating of it is sure to bring along.
        Map ids;
        std::vector<Device> devices;
        std::size_t deviceCount = 0;
        std::int64_t clicks = 0;
        List ratings;
        std::int64_t ratingCount = 0;

        Map map() const;
    };

    const std::int64_t run_ =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    mutable Mutex mutex_;
    std::deque<Entry> entries_ ZENTAVO_GUARDED_BY(mutex_);
    std::uint64_t lastNumber_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::int64_t changes_ ZENTAVO_GUARDED_BY(mutex_) = 0;
};

} // namespace zentavo::devserver
