#include "ports/gtk/WebSandboxProbe.h"

#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <glib.h>

namespace zentavo::gtk {

const std::optional<std::string>& WebSandboxProbe::problem() {
    if (!std::exchange(probed_, true)) {
        problem_ = probe();
    }
    return problem_;
}

std::optional<std::string> WebSandboxProbe::probe() const {
    // Who starts the program may have told the engine to do without; it then makes no sandbox that could fail.
    const char* without = std::getenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");
    if (without != nullptr && *without != '\0' && std::string_view(without) != "0") {
        return std::nullopt;
    }

    std::array<std::string, 10> words{program_, "--ro-bind", "/",      "/",     "--unshare-all",
                                      "--dev",  "/dev",      "--proc", "/proc", "true"};
    std::array<char*, words.size() + 1> arguments{};
    for (std::size_t i = 0; i < words.size(); ++i) {
        arguments.at(i) = words.at(i).data();
    }
    int status = 0;
    GError* error = nullptr;
    const auto flags =
        static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
    std::optional<std::string> problem;
    if (!g_spawn_sync(nullptr, arguments.data(), nullptr, flags, nullptr, nullptr, nullptr, nullptr, &status, &error) ||
        !g_spawn_check_wait_status(status, &error)) {
        problem = "the web engine cannot make its sandbox, which needs user namespaces (" + program_ + ": " +
                  error->message + ")";
        g_clear_error(&error);
    }
    return problem;
}

} // namespace zentavo::gtk
