#pragma once

#include <filesystem>
#include <memory>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Platform.h"

namespace zentavo::linux_port {

struct LinuxOptions {
    /// Where suites are kept, in a folder "preferences" below it. Empty: "zentavo" in the user's folder for application
    /// data ($XDG_DATA_HOME, else ~/.local/share).
    std::filesystem::path dataFolder;
    /// The folder of the program's bundle. Empty: that of the executable.
    std::filesystem::path mainBundle;
};

/// A platform that answers with what Linux has, without a user interface. Several may exist in one process; they share
/// its worker, its network thread and its cookies. Reads the main bundle's information list, opens no other file and
/// starts no thread.
///
/// The standard suite is called like the main bundle's identifier, or like the executable where there is none. Programs
/// whose identifiers begin with the same two components ("com.example" of "com.example.shop") are one vendor's, and
/// share the device's identifier.
ZENTAVO_EXPORT std::shared_ptr<platform::Platform> makeLinuxPlatform(LinuxOptions options = {});

} // namespace zentavo::linux_port
