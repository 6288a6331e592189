#pragma once

#include <vector>

#include "zentavo/push/Slide.h"

namespace zentavo {

/// The pictures of a carousel, in order; there may be none. A plain value.
struct ZENTAVO_EXPORT ImageCarouselSettings {
    std::vector<Slide> slides;

    static ImageCarouselSettings decode(KeyedDecoder& decoder);
    Map encode() const;

    friend bool operator==(const ImageCarouselSettings&, const ImageCarouselSettings&) = default;
};

} // namespace zentavo
