#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Export.h"

namespace zentavo::socketio {

/// The cookies of one server, for the WebSocket connections to it: HTTP requests get theirs from the URL session, which
/// knows nothing of WebSocket. Cookies of other domains and paths do not come here, since a jar has one server and
/// path. What a hostile server sets is bounded: 50 cookies of 4 KiB.
class ZENTAVO_EXPORT CookieJar {
public:
    /// Takes the value of a "Set-Cookie" header. `now` is the steady clock's, by which cookies end; `civil` is the same
    /// moment on the clock that the server's dates are compared with.
    void take(std::string_view setCookie, std::chrono::nanoseconds now, std::chrono::system_clock::time_point civil);
    /// The value of a "Cookie" header; empty when there are none. Cookies that ask for it travel over TLS only.
    std::string header(bool secure, std::chrono::nanoseconds now) const;

private:
    struct Cookie {
        std::string name;
        std::string value;
        bool secure = false;
        std::optional<std::chrono::nanoseconds> expires;
    };
    std::vector<Cookie> cookies_;
};

} // namespace zentavo::socketio
