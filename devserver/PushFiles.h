#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/SeedFiles.h"

namespace zentavo::devserver {

/// Pushes that lie ready, read once: each a file with what is sent, to the letter, but for the placeholders in it. Some
/// are wrong on purpose.
class PushFiles {
public:
    struct File {
        /// Without ".json".
        std::string name;
        std::string text;
    };

    /// From the `*.json` files of `folder`, or the built-in ones when it is empty text.
    static Result<PushFiles> read(const std::string& folder);

    const std::vector<File>& all() const noexcept { return all_; }
    /// Null when there is none.
    const File* find(std::string_view name) const;

private:
    std::vector<File> all_;
};

std::span<const EmbeddedFile> builtInPushes() noexcept;

} // namespace zentavo::devserver
