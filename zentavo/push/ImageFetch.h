#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "zentavo/foundation/Result.h"
#include "zentavo/platform/URLSession.h"

namespace zentavo {

/// Fetches one picture while its caller waits.
class ImageFetch {
public:
    static constexpr std::size_t maximumBytes = 10U << 20U;
    /// Short of the half minute that a system gives a notification's extension.
    static constexpr std::chrono::seconds longest{25};

    explicit ImageFetch(std::shared_ptr<platform::URLSession> session);

    /// Waits for the answer, `cancel`, or the end of the time. Once only, on a thread that the network does not need.
    Result<std::string> get(const URL& url);

    /// Ends `get`, also one that has not begun. Any thread.
    void cancel();

private:
    struct Outcome;

    const std::shared_ptr<platform::URLSession> session_;
    const std::shared_ptr<Outcome> outcome_;
};

} // namespace zentavo
