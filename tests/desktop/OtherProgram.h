#pragma once

#include <string>
#include <vector>

namespace zentavo::tests {

/// A method of an object on the bus that takes one text.
struct TextMethod {
    std::string name; ///< of the program that has the object
    std::string path;
    std::string interface;
    std::string method;
};

inline constexpr const char* accessDenied = "org.freedesktop.DBus.Error.AccessDenied";

/// Runs another process that calls `method`, by the steps that OtherProgramChild.cpp describes; what it printed, when it
/// has ended.
std::vector<std::string> runOtherProgram(const std::string& address, const TextMethod& method,
                                         const std::vector<std::string>& steps);

} // namespace zentavo::tests
