#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ports/linux/CurlTask.h"

namespace zentavo::linux_port {

/// Says which exchange may begin: those of one origin in the order in which they came, and only so many at a time.
/// Constant work per exchange, however many wait.
class HostLimiter {
public:
    /// Six connections carry one exchange each, or, where they multiplex, several.
    static constexpr std::size_t limit = 6;
    static constexpr std::size_t multiplexedLimit = 32;

    /// True: `task` begins now. False: it waits, and `release` will hand it out.
    bool admit(const std::shared_ptr<CurlTask>& task);

    /// An admitted exchange with `origin` is over; `multiplexed` tells what its connection can do, where it had one.
    /// Returns what may begin now. Exchanges that were ended while they waited (they have no request any more) are skipped.
    std::vector<std::shared_ptr<CurlTask>> release(std::string_view origin, std::optional<bool> multiplexed);

    /// An origin of which nothing more can begin before something ends; empty when there is none.
    std::string_view full() const;

private:
    struct Host {
        std::size_t active = 0;
        std::size_t limit = HostLimiter::limit;
        std::deque<std::shared_ptr<CurlTask>> waiting;
    };
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    std::unordered_map<std::string, Host, Hash, std::equal_to<>> hosts_;
};

} // namespace zentavo::linux_port
