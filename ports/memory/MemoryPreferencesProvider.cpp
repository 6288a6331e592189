#include "ports/memory/MemoryPreferencesProvider.h"

namespace zentavo::testing {

MemoryPreferencesProvider::MemoryPreferencesProvider(std::string ownIdentifier,
                                                     std::shared_ptr<platform::SystemLog> log,
                                                     std::shared_ptr<MemoryStore> store)
    : ownIdentifier_(std::move(ownIdentifier)), log_(std::move(log)),
      store_(store ? std::move(store) : std::make_shared<MemoryStore>()) {}

std::shared_ptr<platform::Preferences> MemoryPreferencesProvider::standard() { return opened(); }

std::shared_ptr<platform::Preferences> MemoryPreferencesProvider::suite(std::string_view name) {
    if (!platform::isSuiteName(name, ownIdentifier_)) {
        return nullptr;
    }
    {
        MutexLock lock(mutex_);
        if (refusesAll_ || refused_.contains(name)) {
            return nullptr;
        }
    }
    return opened(std::string(name));
}

void MemoryPreferencesProvider::refuse(std::string name) {
    MutexLock lock(mutex_);
    refused_.insert(std::move(name));
}

void MemoryPreferencesProvider::refuseAll() {
    MutexLock lock(mutex_);
    refusesAll_ = true;
}

std::shared_ptr<MemoryPreferences> MemoryPreferencesProvider::opened(const std::string& name) {
    MutexLock lock(mutex_);
    std::shared_ptr<MemoryPreferences>& preferences = opened_[name];
    if (!preferences) {
        // No suite's name holds a slash, so a program's standard suite is never taken for a named one.
        preferences =
            std::make_shared<MemoryPreferences>(store_->suite(name.empty() ? "/" + ownIdentifier_ : name), log_);
    }
    return preferences;
}

int MemoryPreferencesProvider::synchroniseCount() const {
    MutexLock lock(mutex_);
    int count = 0;
    for (const auto& [name, preferences] : opened_) {
        count += preferences->synchroniseCount();
    }
    return count;
}

} // namespace zentavo::testing
