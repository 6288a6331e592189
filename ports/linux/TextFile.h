#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace zentavo::linux_port {

/// The content of a regular file of at most `maximumBytes`; none when there is no such file, it is longer, or cannot be
/// read. Files of /proc and /sys count too. Never waits for a pipe's other end.
std::optional<std::string> readTextFile(const std::filesystem::path& path, std::size_t maximumBytes);

} // namespace zentavo::linux_port
