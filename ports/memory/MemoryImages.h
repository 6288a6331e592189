#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string_view>

#include "zentavo/platform/Image.h"

namespace zentavo::testing {

/// Reads the files that `MemoryImage::file` writes. Any thread.
class ZENTAVO_EXPORT MemoryImages final : public platform::Images {
public:
    std::shared_ptr<const platform::Image> decode(std::string_view file) override;

    /// How many files it was given.
    std::size_t decoded() const noexcept { return decoded_; }

private:
    std::atomic<std::size_t> decoded_{0};
};

} // namespace zentavo::testing
