#pragma once

#include <cstddef>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Application.h"

namespace zentavo::testing {

/// An application that only remembers what it was asked for. Any thread.
class ZENTAVO_EXPORT MemoryApplication : public platform::Application {
public:
    void registerForRemoteNotifications() override {
        MutexLock lock(mutex_);
        ++registrations_;
    }
    void open(const URL& url) override {
        MutexLock lock(mutex_);
        opened_.push_back(url);
    }

    std::size_t registrations() const {
        MutexLock lock(mutex_);
        return registrations_;
    }
    std::vector<URL> opened() const {
        MutexLock lock(mutex_);
        return opened_;
    }

private:
    mutable Mutex mutex_;
    std::size_t registrations_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::vector<URL> opened_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::testing
