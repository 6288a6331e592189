#pragma once

#include <span>

#include "devserver/SeedFiles.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// Serves the page that shows the campaigns of the visual editor. A campaign's script fills it.
class TemplateHostService final : public Service {
public:
    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;

    static std::string_view page() noexcept;
};

/// The files of `host/`.
std::span<const EmbeddedFile> templateHostFiles() noexcept;

} // namespace zentavo::devserver
