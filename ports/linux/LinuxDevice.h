#pragma once

#include <filesystem>
#include <mutex>

#include "zentavo/platform/Device.h"

namespace zentavo::linux_port {

/// Facts from the kernel, the environment and the system's files. What belongs to the machine is read once; what the
/// user changes while a program runs (locale, time zone, network) is read when asked, for some microseconds each.
///
/// model: the kernel's machine name ("x86_64"). type: "desktop", "laptop", "tablet", "phone", "server", "embedded", or
/// empty. name: the machine's pretty name, else its host name. locale: LC_ALL, LC_MESSAGES, LANG; "en-US-POSIX" for
/// the C locale. network: "wifi", "wired", "cellular", "none", "unknown". screen: 0 by 0, there is none without a toolkit.
class ZENTAVO_EXPORT LinuxDevice : public platform::Device {
public:
    /// `vendor` tells one vendor's identifier from another's; any text. `root` stands for "/".
    explicit LinuxDevice(std::string vendor, std::filesystem::path root = "/");

    /// Made from the machine id, for this vendor. None when the machine has no id.
    std::optional<std::string> identifierForVendor() const override { return machine().identifier; }
    std::string model() const override { return machine().model; }
    std::string type() const override { return machine().type; }
    std::string name() const override { return machine().name; }
    std::string systemName() const override { return "Linux"; }
    std::string systemVersion() const override { return machine().version; }
    std::string locale() const override;
    std::string timeZone() const override;
    std::string network() const override;
    platform::ScreenSize screen() const override { return {}; }

private:
    struct Machine {
        std::optional<std::string> identifier;
        std::string model, type, name, version;
    };
    const Machine& machine() const;

    const std::string vendor_;
    const std::filesystem::path root_;
    mutable std::once_flag asked_;
    mutable Machine machine_;
};

} // namespace zentavo::linux_port
