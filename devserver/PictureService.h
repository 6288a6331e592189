#pragma once

#include <span>
#include <string>

#include "devserver/SeedFiles.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// Serves the pictures of the inbox's own messages, which else would be at a host that does not exist.
class PictureService final : public Service {
public:
    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;

    /// A message as the one who asked can use it: a picture of the media host is one of this server.
    static Value served(Value message, const IncomingRequest& request);
};

/// The files of `pictures/`.
std::span<const EmbeddedFile> builtInPictures() noexcept;

} // namespace zentavo::devserver
