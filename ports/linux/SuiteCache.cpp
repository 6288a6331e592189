#include "ports/linux/SuiteCache.h"

#include "zentavo/foundation/JSON.h"
#include "zentavo/platform/Preferences.h"

namespace zentavo::linux_port {
namespace {

/// More keys than any suite has; a caller who asks for ever new ones shall not fill the memory.
constexpr std::size_t maximumEntries = 4096;

/// Ends a transaction that was not committed, also when the caller's function throws.
class RollBack {
public:
    explicit RollBack(SqliteSuite& suite) : suite_(suite) {}
    ~RollBack() { suite_.rollBack(); }
    RollBack(const RollBack&) = delete;
    RollBack& operator=(const RollBack&) = delete;

private:
    SqliteSuite& suite_;
};

} // namespace

bool SuiteCache::open() {
    StoreStatus status = suite_.ready();
    if (status == StoreStatus::damaged && replaceDamaged()) {
        status = StoreStatus::ok;
    }
    if (status != StoreStatus::ok) {
        trouble();
    }
    return status != StoreStatus::noPlace;
}

std::optional<Value> SuiteCache::get(std::string_view key) {
    if (!pending_.empty()) {
        const auto found = pending_.find(key);
        if (found != pending_.end()) {
            return found->second.value;
        }
    }
    if (generation_ && *generation_ == suite_.generation().begun()) {
        const auto found = entries_.find(key);
        if (found != entries_.end() && found->second.epoch == epoch_) {
            return found->second.value;
        }
    }
    return fetch(key);
}

std::optional<std::uint64_t> SuiteCache::version() {
    if (!generation_ || *generation_ != suite_.generation().begun()) {
        return std::nullopt;
    }
    return epoch_ + changes_;
}

std::optional<Value> SuiteCache::fetch(std::string_view key) {
    std::optional<std::string> text;
    StoreStatus status = suite_.ready();
    if (status == StoreStatus::ok) {
        // Asked for before the database: a write that ends in between makes what we read too new, never too old.
        const auto settled = suite_.generation().settled();
        if (!settled || settled != generation_) {
            ++epoch_;
            generation_ = settled;
        }
        status = suite_.read(key, text);
    }
    if (status == StoreStatus::damaged && replaceDamaged()) {
        flush();
        return get(key);
    }
    const auto known = entries_.find(key);
    if (status != StoreStatus::ok && status != StoreStatus::tooLong) {
        trouble();
        return known != entries_.end() ? known->second.value : std::nullopt;
    }
    isInTrouble_ = isInTrouble_ && !pending_.empty();
    std::optional<Value> value = parsed(text);
    if (!value && (text || status == StoreStatus::tooLong) && known == entries_.end()) {
        say(platform::LogLevel::warning, "the row of \"" + std::string(key) + "\" is unusable and counts as absent");
    }
    remember(key, value);
    return value;
}

std::optional<Value> SuiteCache::parsed(const std::optional<std::string>& text) {
    if (text && text->size() <= platform::Preferences::maximumValueBytes) {
        if (auto value = json::read(*text); value && !value->isNull()) {
            return std::move(*value);
        }
    }
    return std::nullopt;
}

void SuiteCache::put(std::string_view key, std::optional<Value> value, const std::optional<std::string>& text) {
    ++changes_;
    if (!pending_.empty()) {
        pending_.insert_or_assign(std::string(key), Pending{std::move(value), {}});
        flush();
        return;
    }
    StoreStatus status = suite_.ready();
    if (status == StoreStatus::ok) {
        status = suite_.write(key, text);
    }
    if (status == StoreStatus::ok) {
        isInTrouble_ = false;
        noteOwnWrite();
        remember(key, std::move(value));
    } else {
        keepPending(key, {std::move(value), {}}, status);
    }
}

void SuiteCache::update(std::string_view key, const Change& change) {
    ++changes_;
    flush();
    StoreStatus status = pending_.empty() ? suite_.ready() : StoreStatus::failed;
    if (status == StoreStatus::ok) {
        status = suite_.begin();
    }
    const RollBack rollBack(suite_);
    std::optional<Value> next = change(get(key));
    std::optional<std::string> text;
    if (next && next->isNull()) {
        next.reset();
    }
    if (next) {
        auto written = textOf(*next);
        if (!written) {
            refused(key, written.error().message);
            return;
        }
        text = std::move(*written);
    }
    if (status == StoreStatus::ok) {
        status = suite_.write(key, text);
    }
    if (status == StoreStatus::ok) {
        status = suite_.commit();
    }
    if (status == StoreStatus::ok) {
        noteOwnWrite();
        remember(key, std::move(next));
    } else {
        suite_.rollBack();
        Pending pending{std::move(next), {change}};
        if (const auto earlier = pending_.find(key); earlier != pending_.end()) {
            // On a value that was set outright the outcome is as certain as that value.
            pending.changes = std::move(earlier->second.changes);
            if (!pending.changes.empty()) {
                pending.changes.push_back(change);
            }
        }
        keepPending(key, std::move(pending), status);
    }
}

void SuiteCache::keepPending(std::string_view key, Pending pending, StoreStatus reason) {
    if (reason == StoreStatus::tooLong) {
        refused(key, "it is too long");
        return;
    }
    pending_.insert_or_assign(std::string(key), std::move(pending));
    if (reason == StoreStatus::damaged && replaceDamaged()) {
        flush();
    } else {
        trouble();
    }
}

void SuiteCache::flush() {
    if (pending_.empty()) {
        return;
    }
    ++changes_; // an update among them replaces what others have written
    StoreStatus status = writePending();
    if (status == StoreStatus::damaged && replaceDamaged()) {
        status = writePending();
    }
    if (status != StoreStatus::ok) {
        trouble();
        return;
    }
    noteOwnWrite();
    for (auto& [key, pending] : pending_) {
        remember(key, std::move(pending.value));
    }
    pending_.clear();
    if (isInTrouble_) {
        isInTrouble_ = false;
        say(platform::LogLevel::info, "what was kept in memory is stored now");
    }
}

StoreStatus SuiteCache::writePending() {
    StoreStatus status = suite_.ready();
    if (status != StoreStatus::ok) {
        return status;
    }
    suite_.setPatient(false);
    const RollBack rollBack(suite_);
    status = suite_.begin();
    for (auto entry = pending_.begin(); status == StoreStatus::ok && entry != pending_.end();) {
        status = redo(entry->first, entry->second);
        if (status != StoreStatus::ok) {
            break;
        }
        std::optional<std::string> text;
        if (entry->second.value) {
            if (auto written = textOf(*entry->second.value)) {
                text = std::move(*written);
            }
        }
        status = suite_.write(entry->first, text);
        if (status == StoreStatus::tooLong) {
            refused(entry->first, "it is too long");
            entry = pending_.erase(entry);
            status = StoreStatus::ok;
        } else {
            ++entry;
        }
    }
    if (status == StoreStatus::ok) {
        status = suite_.commit();
    }
    suite_.setPatient(true);
    return status;
}

/// Makes the pending updates of `key` anew, on what the file holds now. Inside a transaction.
StoreStatus SuiteCache::redo(const std::string& key, Pending& pending) {
    if (pending.changes.empty()) {
        return StoreStatus::ok;
    }
    std::optional<std::string> text;
    const StoreStatus status = suite_.read(key, text);
    if (status != StoreStatus::ok) {
        return status;
    }
    std::optional<Value> value = parsed(text);
    for (const Change& change : pending.changes) {
        value = change(value);
        if (value && value->isNull()) {
            value.reset();
        }
    }
    if (!value || textOf(*value)) { // what cannot be stored leaves the outcome that could
        pending.value = std::move(value);
    }
    return StoreStatus::ok;
}

bool SuiteCache::replaceDamaged() {
    if (replacementsLeft_ == 0) {
        return false;
    }
    --replacementsLeft_;
    const auto movedTo = suite_.setAside();
    ++epoch_;
    generation_.reset();
    if (!movedTo) {
        return false;
    }
    if (!movedTo->empty()) {
        say(platform::LogLevel::error,
            "the file is damaged; it is kept as " + *movedTo + " and a fresh one takes its place");
        // What the pending updates were made on has gone with the file; their outcome is what is left of it.
        for (auto& [key, pending] : pending_) {
            pending.changes.clear();
        }
        for (const auto& [key, entry] : entries_) {
            if (entry.value) {
                pending_.try_emplace(key, Pending{entry.value, {}});
            }
        }
    }
    return suite_.ready() == StoreStatus::ok;
}

void SuiteCache::remember(std::string_view key, std::optional<Value> value) {
    if (const auto found = entries_.find(key); found != entries_.end()) {
        found->second = {std::move(value), epoch_};
        return;
    }
    if (entries_.size() >= maximumEntries) {
        entries_.clear();
    }
    entries_.emplace(std::string(key), Entry{std::move(value), epoch_});
}

void SuiteCache::noteOwnWrite() {
    const std::uint64_t written = suite_.lastWrite();
    if (!generation_ || *generation_ + 1 != written) {
        ++epoch_; // somebody else has written since we last looked
    }
    generation_ = written != 0 ? std::optional(written) : std::nullopt;
}

Result<std::string> SuiteCache::textOf(const Value& value) {
    auto text = json::write(value);
    if (text && text->size() > platform::Preferences::maximumValueBytes) {
        return Error{"it is too long"};
    }
    return text;
}

void SuiteCache::refused(std::string_view key, std::string_view reason) {
    say(platform::LogLevel::error, "the value for \"" + std::string(key) + "\" is refused: " + std::string(reason));
}

void SuiteCache::trouble() {
    if (!isInTrouble_) {
        isInTrouble_ = true;
        say(platform::LogLevel::error, "the store is out of reach, values are kept in memory: " + suite_.problem());
    }
}

void SuiteCache::say(platform::LogLevel level, std::string_view text) {
    lines_.emplace_back(level, "preferences " + name_ + ": " + std::string(text));
}

} // namespace zentavo::linux_port
