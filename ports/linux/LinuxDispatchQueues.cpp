#include "ports/linux/LinuxDispatchQueues.h"

namespace zentavo::linux_port {

std::shared_ptr<platform::DispatchQueue> LinuxDispatchQueues::make(std::string, platform::QueueKind) {
    // One thread in posting order is what a serial queue promises, and more than a concurrent one does.
    return worker_;
}

} // namespace zentavo::linux_port
