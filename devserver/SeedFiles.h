#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Result.h"

namespace zentavo::devserver {

/// A file that is part of the program.
struct EmbeddedFile {
    std::string_view name;
    std::string_view text;
};

struct SeedFile {
    std::string name;
    std::string text;
};

/// More and larger files are taken for a folder that was named by mistake.
inline constexpr std::size_t mostSeedFiles = 1'000;
inline constexpr std::size_t largestSeedFile = 4U << 20U;

/// The files of `folder` that end in one of `suffixes` (".json"), by name; those of `builtIn` when it is empty text.
Result<std::vector<SeedFile>> seedFiles(const std::string& folder, std::span<const EmbeddedFile> builtIn,
                                        std::initializer_list<std::string_view> suffixes);

} // namespace zentavo::devserver
