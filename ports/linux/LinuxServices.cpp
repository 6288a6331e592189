#include "ports/linux/LinuxServices.h"

#include "ports/linux/CurlURLSession.h"
#include "ports/linux/LinuxClock.h"
#include "ports/linux/LinuxRandom.h"
#include "ports/linux/ProcessThreads.h"
#include "ports/linux/WorkerQueue.h"

namespace zentavo::linux_port {

LinuxServices makeLinuxServices() {
    auto& threads = ProcessThreads::shared();
    return {std::make_shared<WorkerQueue>(threads.worker()), std::make_shared<LinuxClock>(),
            std::make_shared<LinuxRandom>(), std::make_shared<CurlURLSession>(threads.network())};
}

} // namespace zentavo::linux_port
