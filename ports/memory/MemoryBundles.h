#pragma once

#include <map>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Bundle.h"

namespace zentavo::testing {

/// A bundle whose information list a test writes. Any thread.
class ZENTAVO_EXPORT MemoryBundle final : public platform::Bundle {
public:
    explicit MemoryBundle(std::string path) : path_(std::move(path)) {}

    std::string path() const override { return path_; }
    std::optional<std::string> identifier() const override { return infoText("CFBundleIdentifier"); }
    std::optional<Value> info(std::string_view key) const override;

    /// Sets an entry of the information list; null takes it away.
    void set(std::string key, Value value);

private:
    const std::string path_;
    mutable Mutex mutex_;
    Map info_ ZENTAVO_GUARDED_BY(mutex_);
};

/// A folder tree that holds nothing but bundles. Any thread.
class ZENTAVO_EXPORT MemoryBundles final : public platform::Bundles {
public:
    /// Paths are absolute and without a trailing slash. An empty `identifier` leaves the main bundle without one.
    explicit MemoryBundles(std::string mainPath = "/memory/Main.app", std::string_view identifier = {});

    std::shared_ptr<const platform::Bundle> main() override { return main_; }
    std::shared_ptr<const platform::Bundle> open(std::string_view path) override;

    /// The main bundle, to set entries.
    const std::shared_ptr<MemoryBundle>& mainBundle() const { return main_; }
    /// The bundle at `path`, made when it is not there yet.
    std::shared_ptr<MemoryBundle> add(const std::string& path);

private:
    const std::shared_ptr<MemoryBundle> main_;
    Mutex mutex_;
    std::map<std::string, std::shared_ptr<MemoryBundle>, std::less<>> bundles_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::testing
