#pragma once

#include <functional>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ports/linux/SqliteSuite.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/Value.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo::linux_port {

/// A suite's values in memory, in front of its files. A value that was read is good until the shared generation says
/// that somebody has written; a write of our own leaves the others good. One thread at a time.
///
/// What the medium refuses is pending: it counts as stored in this process, and goes into the file with the next write
/// that succeeds. A pending `update` is then made anew on what others have written meanwhile, so it loses nothing of
/// theirs. While something is pending, no call waits for another process.
/// A damaged file is moved aside, and what this process still knows of it goes into the fresh one.
class SuiteCache {
public:
    using Change = std::function<std::optional<Value>(const std::optional<Value>&)>;
    using LogLine = std::pair<platform::LogLevel, std::string>;

    /// Opens nothing yet.
    SuiteCache(const std::filesystem::path& folder, const std::string& fileName)
        : name_(fileName), suite_(folder, name_) {}

    /// False when there is no place for the files. Where they are out of reach for now, as while another process keeps
    /// them locked, the suite lives in memory and tries again with each access.
    bool open();

    std::optional<Value> get(std::string_view key);
    /// Another one after every write of anybody; none unless `get` answers from memory.
    std::optional<std::uint64_t> version();
    /// Stores `value`, whose JSON is `text`; none of both removes.
    void put(std::string_view key, std::optional<Value> value, const std::optional<std::string>& text);
    void update(std::string_view key, const Change& change);
    /// Tries to store what is pending.
    void flush();

    /// The JSON of a value that may be stored, or the reason why it may not.
    static Result<std::string> textOf(const Value& value);

    /// What the system log is to be told, oldest first.
    bool hasLines() const noexcept { return !lines_.empty(); }
    std::vector<LogLine> takeLines() { return std::exchange(lines_, {}); }
    void refused(std::string_view key, std::string_view reason);

    bool logIsLong() const noexcept { return suite_.logIsLong(); }
    std::filesystem::path path() const { return suite_.path(); }

private:
    struct Entry {
        std::optional<Value> value;
        /// Good while it equals `epoch_`; an older one still serves when the database cannot be asked.
        std::uint64_t epoch = 0;
    };
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    /// What has not reached the file yet.
    struct Pending {
        /// What this process reads until then.
        std::optional<Value> value;
        /// The updates that led to it from what the file holds, in order; none where `value` was set outright.
        std::vector<Change> changes;
    };

    std::optional<Value> fetch(std::string_view key);
    static std::optional<Value> parsed(const std::optional<std::string>& text);
    void remember(std::string_view key, std::optional<Value> value);
    void noteOwnWrite();
    void keepPending(std::string_view key, Pending pending, StoreStatus reason);
    StoreStatus redo(const std::string& key, Pending& pending);
    StoreStatus writePending();
    bool replaceDamaged();
    void trouble();
    void say(platform::LogLevel level, std::string_view text);

    const std::string name_;
    SqliteSuite suite_;
    std::unordered_map<std::string, Entry, Hash, std::equal_to<>> entries_;
    std::uint64_t epoch_ = 1;
    /// Calls that may have changed something; like the epoch it only grows.
    std::uint64_t changes_ = 0;
    /// The generation that entries of this epoch are good for; none while nothing may be kept.
    std::optional<std::uint64_t> generation_;
    std::map<std::string, Pending, std::less<>> pending_;
    /// From the first refused access until all is stored again: the log is told once.
    bool isInTrouble_ = false;
    /// A medium that damages every file shall not have us make files for ever.
    int replacementsLeft_ = 3;
    std::vector<LogLine> lines_;
};

} // namespace zentavo::linux_port
