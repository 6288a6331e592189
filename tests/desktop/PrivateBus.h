#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

namespace zentavo::tests {

/// A message bus of a test's own, which ends with this object.
class PrivateBus {
public:
    /// A program that the bus starts when somebody calls `name`. `command` begins with an absolute path.
    struct Startable {
        std::string name;
        std::string command;
    };

    /// Throws where the bus cannot be started.
    explicit PrivateBus(const std::vector<Startable>& programs = {});
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    const std::string& address() const { return address_; }
    /// A folder that goes with the bus.
    const std::filesystem::path& folder() const { return folder_; }

private:
    std::filesystem::path folder_;
    std::string address_;
    pid_t daemon_ = -1;
};

} // namespace zentavo::tests
