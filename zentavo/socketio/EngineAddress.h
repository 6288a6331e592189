#pragma once

#include <optional>
#include <string>

#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/URL.h"
#include "zentavo/socketio/EngineOptions.h"

namespace zentavo::socketio {

/// Where the server is, and how its URLs are made.
class EngineAddress {
public:
    /// Takes http, https, ws and wss. An error for other URLs, and for one with a path: namespaces are named elsewhere.
    static Result<EngineAddress> make(const URL& url, const EngineOptions& options);

    bool secure() const noexcept { return secure_; }
    /// `sid` is empty at first; `nonce`, unless empty, tells caches that no two requests are the same.
    URL polling(const std::string& sid, const std::string& nonce) const { return urlFor("polling", sid, nonce); }
    std::string webSocket(const std::string& sid) const;

private:
    EngineAddress(URL base, bool secure, std::vector<QueryItem> query)
        : base_(std::move(base)), secure_(secure), query_(std::move(query)) {}
    URL urlFor(const char* transport, const std::string& sid, const std::string& nonce) const;

    URL base_; ///< http or https
    bool secure_;
    std::vector<QueryItem> query_;
};

} // namespace zentavo::socketio
