#pragma once

#include <optional>
#include <string>

namespace zentavo::gtk {

/// Whether the web engine can lock its processes up here. It tries itself at its first page, and where the system does
/// not let it (no user namespaces) it stops the whole process: so we try before it. Main thread only.
class WebSandboxProbe {
public:
    /// `program` makes sandboxes; looked for where the system looks for programs.
    explicit WebSandboxProbe(std::string program = "bwrap") : program_(std::move(program)) {}

    /// Why web pages cannot be shown here; none where they can. Takes some 10 ms at the first call, nothing later.
    const std::optional<std::string>& problem();

private:
    std::optional<std::string> probe() const;

    const std::string program_;
    bool probed_ = false;
    std::optional<std::string> problem_;
};

} // namespace zentavo::gtk
