#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace zentavo::tests {

/// The living processes of this name that this process started, or that those did. Names have 15 characters at most.
std::vector<pid_t> descendants(const std::string& name);
/// Memory that this process keeps for itself, in bytes.
std::size_t ownMemory();

} // namespace zentavo::tests
