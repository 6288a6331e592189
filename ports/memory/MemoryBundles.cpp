#include "ports/memory/MemoryBundles.h"

namespace zentavo::testing {

std::optional<Value> MemoryBundle::info(std::string_view key) const {
    MutexLock lock(mutex_);
    const Value* value = info_.find(key);
    return value != nullptr ? std::optional<Value>(*value) : std::nullopt;
}

void MemoryBundle::set(std::string key, Value value) {
    MutexLock lock(mutex_);
    if (value.isNull()) {
        info_.remove(key);
    } else {
        info_.set(std::move(key), std::move(value));
    }
}

MemoryBundles::MemoryBundles(std::string mainPath, std::string_view identifier)
    : main_(std::make_shared<MemoryBundle>(std::move(mainPath))), bundles_{{main_->path(), main_}} {
    if (!identifier.empty()) {
        main_->set("CFBundleIdentifier", identifier);
    }
}

std::shared_ptr<const platform::Bundle> MemoryBundles::open(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    MutexLock lock(mutex_);
    const auto found = bundles_.find(path);
    return found != bundles_.end() ? found->second : nullptr;
}

std::shared_ptr<MemoryBundle> MemoryBundles::add(const std::string& path) {
    MutexLock lock(mutex_);
    std::shared_ptr<MemoryBundle>& bundle = bundles_[path];
    if (!bundle) {
        bundle = std::make_shared<MemoryBundle>(path);
    }
    return bundle;
}

} // namespace zentavo::testing
