#pragma once

#include <memory>
#include <string_view>

#include "zentavo/platform/Image.h"

namespace zentavo::gtk {

/// The toolkit's picture formats. Any thread.
class PixbufImages final : public platform::Images {
public:
    std::shared_ptr<const platform::Image> decode(std::string_view file) override;
};

} // namespace zentavo::gtk
