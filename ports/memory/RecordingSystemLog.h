#pragma once

#include <string>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo::testing {

/// A system log that a test reads. Any thread.
class ZENTAVO_EXPORT RecordingSystemLog final : public platform::SystemLog {
public:
    struct Entry {
        platform::LogLevel level;
        std::string message;
    };

    void write(platform::LogLevel level, std::string_view message) override {
        MutexLock lock(mutex_);
        entries_.push_back({level, std::string(message)});
    }

    /// Everything written so far, oldest first.
    std::vector<Entry> entries() const {
        MutexLock lock(mutex_);
        return entries_;
    }
    void clear() {
        MutexLock lock(mutex_);
        entries_.clear();
    }

private:
    mutable Mutex mutex_;
    std::vector<Entry> entries_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::testing
