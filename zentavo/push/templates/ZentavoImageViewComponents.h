#pragma once

#include <memory>

#include "zentavo/platform/Platform.h"

namespace zentavo {

/// The views that a `ZentavoImageView` is made of.
struct ZentavoImageViewComponents {
    /// Around the picture; its background shows until that has come.
    std::shared_ptr<platform::View> container;
    std::shared_ptr<platform::ImageView> picture;
};

} // namespace zentavo
