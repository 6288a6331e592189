#include "ports/memory/MemoryPlatform.h"

namespace zentavo::platform {

std::shared_ptr<Platform> makeDefault() { return testing::MemoryPlatform().platform(); }

} // namespace zentavo::platform
