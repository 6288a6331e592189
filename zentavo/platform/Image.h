#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Views.h"

namespace zentavo::platform {

/// A picture, decoded. It does not change: any thread, its destruction included.
class ZENTAVO_EXPORT Image {
public:
    virtual ~Image() = default;

    /// In pixels as it is meant to be seen, at least one by one.
    virtual Size size() const = 0;
    /// What it takes of memory.
    virtual std::size_t bytes() const = 0;
    /// The same picture in another size, at least one by one.
    virtual std::shared_ptr<const Image> resized(Size size) const = 0;
};

/// Makes pictures of files. Any thread.
class ZENTAVO_EXPORT Images {
public:
    /// A file says how large its picture will be, whatever its own length: beyond this it is refused.
    static constexpr double maximumPixels = 16.0 * 1024 * 1024;

    virtual ~Images() = default;

    /// PNG, JPEG and whatever else the system knows; of a moving picture the first frame. Null for what is none, is
    /// damaged or too large. Takes its time: not for the main queue.
    virtual std::shared_ptr<const Image> decode(std::string_view file) = 0;
};

} // namespace zentavo::platform
