#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::platform {

/// One preference suite: a small persistent map from key to value (text, number, boolean, list, map), shared by every
/// process that opens the suite under the same name.
///
/// Threads: all members may be called on any thread at once.
/// Order: a read that starts after a write returned, in this process or another, sees that write.
/// Lifetime: a value that `set` has accepted survives the process being killed right after `set` returned; surviving a
/// power cut is promised only after `synchronise`.
/// Failure: when the medium refuses a write (read-only, full), the value is kept in memory for this process, the
/// system log is told once, and the write is tried again at the next write or `synchronise`. No member throws.
/// Cost: reads come from memory unless another process has written meanwhile. Writes do not wait for the medium
/// (no fsync on the calling thread).
class ZENTAVO_EXPORT Preferences {
public:
    /// The longest value, as JSON text.
    static constexpr std::size_t maximumValueBytes = 1U << 20U;

    virtual ~Preferences() = default;

    /// What is stored under `key`; none when nothing is. A stored null counts as nothing.
    virtual std::optional<Value> object(std::string_view key) const = 0;

    /// A mark of what is stored: while it stays the same, so does all that can be read, whoever writes. For readers of
    /// several keys who keep what they made of them. None where or while that cannot be told. Costs no more than a read.
    virtual std::optional<std::uint64_t> version() const { return std::nullopt; }

    /// Stores `value`; null removes the key. A value that JSON cannot say (non-finite, invalid UTF-8, nested too deep)
    /// or that is longer than `maximumValueBytes` is refused with a line in the system log, and what was stored stays.
    virtual void set(std::string_view key, Value value) = 0;

    virtual void remove(std::string_view key) = 0;

    /// Replaces what is under `key` by what `change` makes of it (none removes), as one step that no other thread or
    /// process comes between. `change` may be called more than once, must be quick, and must not touch the suite. It
    /// is copied and may be called after `update` has returned, where another process kept the suite busy: capture by
    /// value.
    virtual void update(std::string_view key,
                        const std::function<std::optional<Value>(const std::optional<Value>&)>& change) = 0;

    /// Asks for everything written so far to be carried to the medium. Does not wait for it.
    virtual void synchronise() = 0;

    /// Typed reads, with the coercions that hosts know: a number reads as its decimal text; text reads as the number
    /// that it starts with, as far as it is one; booleans read as 1 and 0. What cannot be coerced reads as absent.
    std::optional<std::string> string(std::string_view key) const;
    /// 0 when there is nothing or nothing numeric.
    double number(std::string_view key) const;
    /// As `number`, without the fraction, and exact for 64-bit integers. What is beyond them becomes the nearest one.
    std::int64_t integer(std::string_view key) const;
    std::optional<Map> map(std::string_view key) const;
};

/// What `Preferences::integer` makes of a stored value.
ZENTAVO_EXPORT std::int64_t coercedInteger(const Value& stored);

/// Whether a provider may open a suite of this name: it is not empty, not the main bundle's own identifier (empty for a
/// program without one), and holds neither "/" nor NUL.
ZENTAVO_EXPORT bool isSuiteName(std::string_view name, std::string_view ownIdentifier) noexcept;

/// Opens suites. Two calls with one name give the same suite, within a process and between processes.
class ZENTAVO_EXPORT PreferencesProvider {
public:
    virtual ~PreferencesProvider() = default;

    /// The suite of the running program itself. Never refused: where no medium can be had, it lives in memory, and the
    /// system log says so.
    virtual std::shared_ptr<Preferences> standard() = 0;

    /// The suite called `name`; null when it is refused: `isSuiteName` says no, or no place for it can be made.
    /// One that another process merely keeps busy is not refused: it lives in memory until it can be reached.
    virtual std::shared_ptr<Preferences> suite(std::string_view name) = 0;
};

} // namespace zentavo::platform
