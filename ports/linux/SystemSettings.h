#pragma once

#include <filesystem>
#include <string>

namespace zentavo::linux_port {

/// What the user has set, read from the environment and the system's files as they are now. `root` stands for "/".

/// BCP 47 of the first of LC_ALL, `category` ("LC_MESSAGES", "LC_TIME") and LANG that says something: "pt-BR",
/// "sr-Latn-RS". "en-US-POSIX" for the C locale and where nothing is said; "und" for what is no locale's name. The
/// process's own locale is neither used nor changed.
std::string localeOf(const char* category);

/// The IANA name of the time zone: TZ where it names one, else what /etc/localtime leads to, else /etc/timezone.
/// "UTC" when none of them says, and for a TZ that spells out rules instead of naming a zone.
std::string timeZoneName(const std::filesystem::path& root = "/");

} // namespace zentavo::linux_port
