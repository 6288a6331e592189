#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace zentavo::linux_port {

using Id128 = std::array<std::uint8_t, 16>;

/// The 16 bytes of the machine id file ("/etc/machine-id"); none when the machine has none, or not yet.
std::optional<Id128> readMachineId(const std::filesystem::path& file);

/// An identifier of this machine for one application, as systemd's sd_id128_get_machine_app_specific makes it: SHA-256
/// keyed with the machine id over the application's, so that it cannot be traced back. Made here since loading that
/// library takes longer than all else that the device is asked.
Id128 appSpecificId(const Id128& machine, const Id128& application);

/// A fixed identifier for `vendor`'s programs.
Id128 applicationIdOf(std::string_view vendor);

} // namespace zentavo::linux_port
