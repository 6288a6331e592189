#pragma once

#include <cstddef>
#include <string>

#include "devserver/LoggedRequest.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo::devserver {

/// Prints a line for each request on standard output, from any thread. A reader that does not read makes it leave lines
/// out; it never makes a request wait.
class Console {
public:
    void print(const LoggedRequest& request);

    /// "09:03:07.123  #12  POST /sandbox/event  200  view_product  ! uid is missing", control characters replaced.
    static std::string line(const LoggedRequest& request);

private:
    Mutex mutex_;
    std::size_t left_ ZENTAVO_GUARDED_BY(mutex_) = 0;
};

} // namespace zentavo::devserver
