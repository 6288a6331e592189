#include "zentavo/socketio/HandlerTable.h"

#include <algorithm>
#include <utility>

#include "zentavo/foundation/Fault.h"

namespace zentavo::socketio {

std::string HandlerTable::keyOf(Kind kind, std::string_view name) {
    std::string key(1, kind == Kind::named ? 'n' : kind == Kind::anyIncoming ? 'i' : 'o');
    return key.append(kind == Kind::named ? name : std::string_view());
}

HandlerId HandlerTable::add(Kind kind, std::string_view name, EventHandler handler, bool once) {
    auto entry = std::make_shared<Entry>();
    entry->kind = kind;
    entry->handler = std::move(handler);
    entry->once = once;
    outgoing_ += kind == Kind::anyOutgoing ? 1 : 0;
    MutexLock lock(mutex_);
    entry->id = HandlerId(++last_);
    entries_[keyOf(kind, name)].push_back(entry);
    return entry->id;
}

/// Takes `entry`, or all where there is none, out of the list under `key`.
void HandlerTable::forget(Entries& removed, const std::string& key, const Entry* entry) {
    const auto found = entries_.find(key);
    if (found == entries_.end()) {
        return;
    }
    auto& list = found->second;
    const auto kept = std::stable_partition(list.begin(), list.end(),
                                            [&](const auto& one) { return entry != nullptr && one.get() != entry; });
    for (auto it = kept; it != list.end(); ++it) {
        (*it)->gone = true;
        outgoing_ -= (*it)->kind == Kind::anyOutgoing ? 1 : 0;
        removed.push_back(std::move(*it));
    }
    list.erase(kept, list.end());
    if (list.empty()) {
        entries_.erase(found);
    }
}

void HandlerTable::remove(HandlerId id) {
    Entries removed;
    MutexLock lock(mutex_);
    for (const auto& [key, list] : entries_) {
        const auto found = std::find_if(list.begin(), list.end(), [&](const auto& entry) { return entry->id == id; });
        if (found != list.end()) {
            forget(removed, std::string(key), found->get());
            break;
        }
    }
    lock.unlock();
}

void HandlerTable::removeNamed(std::string_view name) {
    Entries removed;
    MutexLock lock(mutex_);
    forget(removed, keyOf(Kind::named, name), nullptr);
    lock.unlock();
}

void HandlerTable::clear() {
    Entries removed;
    MutexLock lock(mutex_);
    while (!entries_.empty()) {
        forget(removed, std::string(entries_.begin()->first), nullptr);
    }
    lock.unlock();
}

void HandlerTable::call(Kind kind, const Event& event) {
    const auto key = keyOf(kind, event.name);
    MutexLock lock(mutex_);
    const auto found = entries_.find(key);
    const Entries called = found == entries_.end() ? Entries() : found->second;
    lock.unlock();
    for (const auto& entry : called) {
        const bool gone = entry->once ? entry->gone.exchange(true) : entry->gone.load();
        if (gone) {
            continue;
        }
        if (entry->once) {
            Entries removed;
            lock.lock();
            forget(removed, key, entry.get());
            lock.unlock();
        }
        entryPoint("Socket.IO handler", [&] { entry->handler(event); });
    }
}

} // namespace zentavo::socketio
