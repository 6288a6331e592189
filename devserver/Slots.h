#pragma once

#include <atomic>
#include <memory>

namespace zentavo::devserver {

/// A bound on something that keeps a connection's thread busy for long: waiting tests, hanging answers. For any
/// thread; must outlive what it gave out.
class Slots {
public:
    explicit Slots(int count) : free_(count) {}

    /// Held for as long as the pointer lives; null when none is free.
    std::shared_ptr<void> take() {
        if (free_.fetch_sub(1) > 0) {
            return {this, [](Slots* slots) { slots->free_.fetch_add(1); }};
        }
        free_.fetch_add(1);
        return nullptr;
    }

private:
    std::atomic<int> free_;
};

} // namespace zentavo::devserver
