#include "devserver/PushFiles.h"

#include <algorithm>
#include <utility>

namespace zentavo::devserver {

Result<PushFiles> PushFiles::read(const std::string& folder) {
    constexpr std::string_view suffix = ".json";
    auto files = seedFiles(folder, builtInPushes(), {suffix});
    if (!files) {
        return files.error();
    }
    PushFiles pushes;
    for (SeedFile& file : *files) {
        pushes.all_.push_back({file.name.substr(0, file.name.size() - suffix.size()), std::move(file.text)});
    }
    return pushes;
}

const PushFiles::File* PushFiles::find(std::string_view name) const {
    const auto found = std::ranges::find(all_, name, &File::name);
    return found != all_.end() ? &*found : nullptr;
}

} // namespace zentavo::devserver
