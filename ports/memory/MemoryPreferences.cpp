#include "ports/memory/MemoryPreferences.h"

#include "zentavo/foundation/JSON.h"

namespace zentavo::testing {

MemoryPreferences::MemoryPreferences(std::shared_ptr<MemoryStore::Suite> suite,
                                     std::shared_ptr<platform::SystemLog> log)
    : suite_(std::move(suite)), log_(std::move(log)) {}

bool MemoryPreferences::acceptable(std::string_view key, const Value& value) const {
    const auto text = json::write(value);
    if (text && text->size() <= maximumValueBytes) {
        return true;
    }
    if (log_) {
        log_->write(platform::LogLevel::error, "preferences: the value for \"" + std::string(key) + "\" is refused: " +
                                                   (text ? "it is too long" : text.error().message));
    }
    return false;
}

std::optional<Value> MemoryPreferences::object(std::string_view key) const {
    MutexLock lock(suite_->mutex);
    const Value* stored = suite_->values.find(key);
    return stored != nullptr ? std::optional<Value>(*stored) : std::nullopt;
}

std::optional<std::uint64_t> MemoryPreferences::version() const {
    MutexLock lock(suite_->mutex);
    return suite_->writes;
}

void MemoryPreferences::set(std::string_view key, Value value) {
    if (value.isNull()) {
        remove(key);
    } else if (acceptable(key, value)) {
        MutexLock lock(suite_->mutex);
        suite_->values.set(std::string(key), std::move(value));
        ++suite_->writes;
    }
}

void MemoryPreferences::remove(std::string_view key) {
    MutexLock lock(suite_->mutex);
    suite_->values.remove(key);
    ++suite_->writes;
}

void MemoryPreferences::update(std::string_view key,
                               const std::function<std::optional<Value>(const std::optional<Value>&)>& change) {
    MutexLock lock(suite_->mutex);
    const Value* stored = suite_->values.find(key);
    auto next = change(stored != nullptr ? std::optional<Value>(*stored) : std::nullopt);
    if (!next || next->isNull()) {
        suite_->values.remove(key);
    } else if (acceptable(key, *next)) {
        suite_->values.set(std::string(key), std::move(*next));
    }
    ++suite_->writes;
}

Map MemoryPreferences::contents() const {
    MutexLock lock(suite_->mutex);
    return suite_->values;
}

} // namespace zentavo::testing
