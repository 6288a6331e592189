#include "zentavo/websocket/MaskKeys.h"

namespace zentavo::websocket {

void MaskKeys::refill() {
    random_->fill({pool_.front().data(), sizeof pool_});
    used_ = 0;
}

} // namespace zentavo::websocket
