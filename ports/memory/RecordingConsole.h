#pragma once

#include <string>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo::testing {

/// A standard output that a test reads. Any thread.
class ZENTAVO_EXPORT RecordingConsole final : public platform::Console {
public:
    void writeLine(std::string_view line) override {
        MutexLock lock(mutex_);
        lines_.emplace_back(line);
    }

    /// Every line written so far, oldest first.
    std::vector<std::string> lines() const {
        MutexLock lock(mutex_);
        return lines_;
    }
    void clear() {
        MutexLock lock(mutex_);
        lines_.clear();
    }

private:
    mutable Mutex mutex_;
    std::vector<std::string> lines_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::testing
