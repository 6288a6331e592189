#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "devserver/Problems.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// What is to go wrong with the answer to a request. The request itself is judged and logged as ever.
struct ScriptedFault {
    enum class Kind {
        /// The plain answer, with the status, session id or pace asked for.
        plain,
        resetBefore,
        /// The connection breaks in the middle of the answer's body.
        resetMidway,
        /// No answer, until the client or the server goes.
        hang,
        empty,
        /// `text` as the body.
        body,
        /// A body of `size` bytes, valid JSON where there is room for it.
        size,
        /// `text` as the location.
        redirect,
    };

    /// A service's path, which means both twins, a twin's own path ("/sandbox/event"), or "*" for every service.
    std::string path;
    Kind kind = Kind::plain;
    std::string text;
    std::size_t size = 0;
    std::optional<int> status;
    std::chrono::milliseconds delay{0};
    /// Bytes of the body a second; none for all at once.
    std::optional<std::size_t> drip;
    std::optional<std::string> sessionId;
    int times = 1;

    /// From the parameters of a request; adds to `problems` what is wrong with them.
    static ScriptedFault from(const std::vector<QueryItem>& query, Problems& problems);

    bool matches(Twin twin, std::string_view servicePath) const;
    /// True when the answer keeps a thread busy for longer than it takes to write it.
    bool isSlow() const noexcept;
    /// The parameters that make it, without the path and times: "status=500 delay=20".
    std::string description() const;
};

} // namespace zentavo::devserver
