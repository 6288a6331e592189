#pragma once

#include <string>
#include <utility>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo {

/// The label of the next `Atomic`: "com.zentavo.atomic." and a number that no other has in this process.
ZENTAVO_EXPORT std::string nextAtomicLabel();

/// A value that several threads read and write, one at a time and synchronously. The label only tells one from another
/// in a debugger.
template <class T>
class Atomic {
public:
    explicit Atomic(T value) : value_(std::move(value)), label_(nextAtomicLabel()) {}

    T get() const {
        MutexLock lock(mutex_);
        return value_;
    }
    void set(T value) {
        MutexLock lock(mutex_);
        value_ = std::move(value);
    }
    /// Sets `desired` where the value equals `expected`, in one step. True when it did.
    bool compareAndSet(const T& expected, T desired) {
        MutexLock lock(mutex_);
        if (!(value_ == expected)) {
            return false;
        }
        value_ = std::move(desired);
        return true;
    }

    const std::string& label() const noexcept { return label_; }

private:
    mutable Mutex mutex_;
    T value_ ZENTAVO_GUARDED_BY(mutex_);
    const std::string label_;
};

} // namespace zentavo
