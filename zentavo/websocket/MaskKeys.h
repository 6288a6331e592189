#pragma once

#include <memory>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Random.h"
#include "zentavo/websocket/Frame.h"

namespace zentavo::websocket {

/// Mask keys that nobody can foretell, drawn from `Random` many at a time: asking it for each frame would cost more
/// than the frame. One thread at a time.
class ZENTAVO_EXPORT MaskKeys {
public:
    explicit MaskKeys(std::shared_ptr<platform::Random> random) noexcept : random_(std::move(random)) {}

    MaskKey next() {
        if (used_ == pool_.size()) {
            refill();
        }
        return pool_[used_++];
    }

private:
    void refill();

    std::shared_ptr<platform::Random> random_;
    std::array<MaskKey, 256> pool_{};
    std::size_t used_ = 256;
};

} // namespace zentavo::websocket
