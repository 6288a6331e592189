// Alone in its file: a program that defines a default of its own does not pull this one from a static library.

#include "ports/linux/LinuxPlatform.h"

namespace zentavo::platform {

std::shared_ptr<Platform> makeDefault() { return linux_port::makeLinuxPlatform(); }

} // namespace zentavo::platform
