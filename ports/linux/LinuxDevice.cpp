#include "ports/linux/LinuxDevice.h"

#include <sys/utsname.h>

#include "ports/linux/MachineFacts.h"
#include "ports/linux/MachineId.h"
#include "ports/linux/SystemSettings.h"
#include "zentavo/foundation/UUID.h"

namespace zentavo::linux_port {

LinuxDevice::LinuxDevice(std::string vendor, std::filesystem::path root)
    : vendor_(std::move(vendor)), root_(std::move(root)) {}

const LinuxDevice::Machine& LinuxDevice::machine() const {
    std::call_once(asked_, [this] {
        if (const auto id = readMachineId(root_ / "etc/machine-id")) {
            machine_.identifier = uuid::text(appSpecificId(*id, applicationIdOf(vendor_)));
        }
        utsname kernel{};
        if (::uname(&kernel) == 0) {
            machine_.model = kernel.machine;
            machine_.version = kernel.release;
            machine_.name = kernel.nodename;
        }
        if (std::string pretty = machineInfo("PRETTY_HOSTNAME", root_); !pretty.empty()) {
            machine_.name = std::move(pretty);
        }
        machine_.type = chassisKind(root_);
    });
    return machine_;
}

std::string LinuxDevice::locale() const { return localeOf("LC_MESSAGES"); }

std::string LinuxDevice::timeZone() const { return timeZoneName(root_); }

std::string LinuxDevice::network() const { return networkKind(root_); }

} // namespace zentavo::linux_port
