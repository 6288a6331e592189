#include "devserver/SeedFiles.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace zentavo::devserver {

Result<std::vector<SeedFile>> seedFiles(const std::string& folder, std::span<const EmbeddedFile> builtIn,
                                        std::initializer_list<std::string_view> suffixes) {
    std::vector<SeedFile> files;
    const auto wanted = [&](const std::string& name) {
        return std::ranges::any_of(suffixes, [&](std::string_view suffix) { return name.ends_with(suffix); });
    };
    if (folder.empty()) {
        for (const EmbeddedFile& file : builtIn) {
            if (wanted(std::string(file.name))) {
                files.push_back({std::string(file.name), std::string(file.text)});
            }
        }
        return files;
    }
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        std::error_code ignored;
        if (!wanted(name) || !entry.is_regular_file(ignored)) {
            continue;
        }
        if (entry.file_size(ignored) > largestSeedFile || files.size() == mostSeedFiles) {
            return Error{"the folder " + folder + " holds too much: " + name};
        }
        std::ifstream stream(entry.path(), std::ios::binary);
        files.push_back({name, {std::istreambuf_iterator<char>(stream), {}}});
    }
    if (error) {
        return Error{"the folder " + folder + " cannot be read: " + error.message()};
    }
    std::ranges::sort(files, {}, &SeedFile::name);
    return files;
}

} // namespace zentavo::devserver
