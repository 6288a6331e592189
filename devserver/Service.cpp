#include "devserver/Service.h"

namespace zentavo::devserver {

std::string_view name(Twin twin) noexcept { return twin == Twin::production ? "production" : "sandbox"; }

ServicePath ServicePath::of(std::string_view path) noexcept {
    constexpr std::string_view prefix = "/sandbox";
    if (path.starts_with(prefix) && path.substr(prefix.size()).starts_with('/')) {
        return {Twin::sandbox, path.substr(prefix.size())};
    }
    return {Twin::production, path};
}

} // namespace zentavo::devserver
