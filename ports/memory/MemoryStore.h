#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::testing {

/// The medium under memory preferences. Providers made from one store share its suites as two processes share files;
/// the store lives as long as any of them. Any thread.
class ZENTAVO_EXPORT MemoryStore {
public:
    /// What one suite holds. Keys are in the order of first writing.
    struct Suite {
        Mutex mutex;
        Map values ZENTAVO_GUARDED_BY(mutex);
        std::uint64_t writes ZENTAVO_GUARDED_BY(mutex) = 0;
    };

    /// The suite called `name`, empty when nobody has written to it yet.
    std::shared_ptr<Suite> suite(const std::string& name);

private:
    Mutex mutex_;
    std::map<std::string, std::shared_ptr<Suite>> suites_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::testing
