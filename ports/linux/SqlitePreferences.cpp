#include "ports/linux/SqlitePreferences.h"

namespace zentavo::linux_port {

SqlitePreferences::SqlitePreferences(const std::filesystem::path& folder, const std::string& fileName,
                                     std::shared_ptr<platform::SystemLog> log, Background background)
    : log_(std::move(log)), background_(std::move(background)), cache_(folder, fileName) {}

/// Calls `body` with the cache under the lock. The system log, which is somebody else's code, is told without it.
template <class Body>
auto SqlitePreferences::locked(Body body) const {
    MutexLock lock(mutex_);
    auto result = body(cache_);
    if (cache_.hasLines()) {
        const auto lines = cache_.takeLines();
        lock.unlock();
        for (const auto& [level, text] : lines) {
            log_->write(level, text);
        }
    }
    return result;
}

bool SqlitePreferences::open() {
    return locked([](SuiteCache& cache) { return cache.open(); });
}

std::optional<Value> SqlitePreferences::object(std::string_view key) const {
    return locked([&](SuiteCache& cache) { return cache.get(key); });
}

std::optional<std::uint64_t> SqlitePreferences::version() const {
    return locked([](SuiteCache& cache) { return cache.version(); });
}

void SqlitePreferences::set(std::string_view key, Value value) {
    if (value.isNull()) {
        store(key, std::nullopt, std::nullopt);
        return;
    }
    auto text = SuiteCache::textOf(value);
    if (text) {
        store(key, std::move(value), *text);
    } else {
        locked([&](SuiteCache& cache) {
            cache.refused(key, text.error().message);
            return true;
        });
    }
}

void SqlitePreferences::remove(std::string_view key) { store(key, std::nullopt, std::nullopt); }

void SqlitePreferences::store(std::string_view key, std::optional<Value> value,
                              const std::optional<std::string>& text) {
    const bool isLong = locked([&](SuiteCache& cache) {
        cache.put(key, std::move(value), text);
        return cache.logIsLong();
    });
    if (isLong) {
        synchronise();
    }
}

void SqlitePreferences::update(std::string_view key,
                               const std::function<std::optional<Value>(const std::optional<Value>&)>& change) {
    const bool isLong = locked([&](SuiteCache& cache) {
        cache.update(key, change);
        return cache.logIsLong();
    });
    if (isLong) {
        synchronise();
    }
}

void SqlitePreferences::synchronise() {
    if (isWorkWaiting_.exchange(true)) {
        return;
    }
    auto work = [self = weak_from_this()] {
        const auto preferences = self.lock();
        if (!preferences) {
            return; // whoever opens the suite next finds everything in the log
        }
        // Cleared first: a write from here on is not covered by this round.
        preferences->isWorkWaiting_ = false;
        const auto [path, isLong] = preferences->locked([](SuiteCache& cache) {
            cache.flush();
            return std::pair(cache.path(), cache.logIsLong());
        });
        isLong ? SqliteSuite::carryOver(path) : SqliteSuite::sync(path);
    };
    if (background_) {
        background_(std::move(work));
    } else {
        work();
    }
}

} // namespace zentavo::linux_port
