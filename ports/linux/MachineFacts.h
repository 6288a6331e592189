#pragma once

#include <filesystem>
#include <string>

namespace zentavo::linux_port {

/// What the kernel and the administrator's files say about the machine now. `root` stands for "/".

/// The kind of connection: that with the default route, else any that is up. "wifi", "wired", "cellular"; "unknown" for
/// others, such as a tunnel; "none" when nothing is up.
std::string networkKind(const std::filesystem::path& root = "/");

/// "desktop", "laptop", "tablet", "phone", "server", "embedded", "vm" or "container", by the administrator's word in
/// /etc/machine-info, the firmware's chassis number, or the device tree; empty when nobody says.
std::string chassisKind(const std::filesystem::path& root = "/");

/// The value of `name` in /etc/machine-info, without quotes; empty when it is not there.
std::string machineInfo(const std::string& name, const std::filesystem::path& root = "/");

} // namespace zentavo::linux_port
