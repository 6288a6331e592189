#include "ports/memory/MemoryStore.h"

namespace zentavo::testing {

std::shared_ptr<MemoryStore::Suite> MemoryStore::suite(const std::string& name) {
    MutexLock lock(mutex_);
    std::shared_ptr<Suite>& suite = suites_[name];
    if (!suite) {
        suite = std::make_shared<Suite>();
    }
    return suite;
}

} // namespace zentavo::testing
