#include "zentavo/websocket/Patience.h"

#include <utility>

namespace zentavo::websocket {

bool Patience::heard() noexcept {
    heard_ = true;
    return std::exchange(asked_, false);
}

Patience::Verdict Patience::judge(bool full, bool deaf) noexcept {
    const bool moved = std::exchange(wrote_, 0) != 0 && (full || wasFull_);
    wasFull_ = full;
    if (std::exchange(heard_, false) || deaf || moved) {
        asked_ = false;
        return Verdict::alive;
    }
    return std::exchange(asked_, true) ? Verdict::gone : Verdict::ask;
}

bool Patience::mayTakeLonger() noexcept { return std::exchange(wrote_, 0) >= leastProgress; }

} // namespace zentavo::websocket
