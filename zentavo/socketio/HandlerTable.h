#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/socketio/Event.h"

namespace zentavo::socketio {

/// The handlers of one socket. Any thread adds and removes, also inside a handler; what is removed is not called any
/// more, not even for an event that is being told. Handlers are called and destroyed with no lock held.
class HandlerTable {
public:
    enum class Kind { named, anyIncoming, anyOutgoing };

    HandlerId add(Kind kind, std::string_view name, EventHandler handler, bool once);
    void remove(HandlerId id);
    void removeNamed(std::string_view name);
    void clear();

    bool hasOutgoing() const noexcept { return outgoing_.load() > 0; }
    void call(Kind kind, const Event& event);

private:
    struct Entry {
        HandlerId id;
        Kind kind;
        EventHandler handler;
        bool once;
        std::atomic<bool> gone = false;
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;

    void forget(Entries& removed, const std::string& key, const Entry* entry) ZENTAVO_REQUIRES(mutex_);
    static std::string keyOf(Kind kind, std::string_view name);

    mutable Mutex mutex_;
    std::uint64_t last_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::unordered_map<std::string, Entries> entries_ ZENTAVO_GUARDED_BY(mutex_);
    std::atomic<int> outgoing_ = 0;
};

} // namespace zentavo::socketio
