#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/URL.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/Headers.h"

namespace zentavo::platform {

/// One HTTP request. Copies share headers and body.
struct ZENTAVO_EXPORT URLRequest {
    explicit URLRequest(URL target) : url(std::move(target)) {}

    URL url;
    std::string method = "GET";
    Headers headers;
    /// Null: the request has no body. Empty text is a body of no bytes.
    std::shared_ptr<const std::string> body;
    /// How long nothing may come or go before the request fails, connecting included.
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(60);
    /// How long the whole exchange may take, however busy it is.
    std::chrono::milliseconds totalTimeout = std::chrono::minutes(15);
    /// A longer answer body fails the request.
    std::size_t maximumAnswerBytes = 16U << 20U;

    /// Compared whole: URL, method, headers and the bytes of the body.
    friend ZENTAVO_EXPORT bool operator==(const URLRequest& a, const URLRequest& b);
};

/// The head of an HTTP answer, of the last hop where there were redirects.
struct URLResponse {
    int status = 0;
    std::vector<Header> headers; ///< in the order of arrival
};

enum class URLErrorKind {
    unsupportedURL,
    cannotResolveHost,
    cannotConnect,
    timedOut,
    connectionLost,
    tooManyRedirects,
    secureConnectionFailed,
    answerTooLarge,
    cancelled,
    other,
};

struct URLError {
    URLErrorKind kind = URLErrorKind::other;
    std::string message; ///< for people: "Connection refused (127.0.0.1:8787)"
};

/// How an exchange ended. A complete exchange has `response` and `data` (empty text when the answer had no bytes) and no
/// error. A failed one has an error and no data, and a response only where the head had arrived.
struct URLResult {
    std::optional<std::string> data;
    std::optional<URLResponse> response;
    std::optional<URLError> error;
};

/// An exchange under way. Releasing it changes nothing; the exchange goes on.
class ZENTAVO_EXPORT URLTask {
public:
    virtual ~URLTask() = default;
    /// Ends the exchange early; its completion is told `cancelled` unless it has been told already. Any thread.
    virtual void cancel() = 0;
};

/// Sends HTTP requests. Each call is a session of its own towards the caller; under all of them connections, cookies
/// and TLS sessions are shared and kept alive.
///
/// Threads: `start` may be called on any thread and returns at once; no disk, no network on the calling thread.
/// Completion: called exactly once, on `queue`, never inside `start`, also for failures found at once. After the process
/// has begun to exit it may not be called at all.
/// Order: requests are begun in the order of `start`, at most six connections to one host; answers come as they come.
/// Protocols: http and https only, also after redirects (20 at most); 301, 302 and 303 turn a POST into a GET.
/// End: requests handed over before the process exits get up to a second to leave.
class ZENTAVO_EXPORT URLSession {
public:
    using Completion = std::function<void(URLResult)>;

    virtual ~URLSession() = default;

    /// The request is shared and must not change any more; it is released when the exchange is over.
    virtual std::shared_ptr<URLTask> start(std::shared_ptr<const URLRequest> request,
                                           std::shared_ptr<DispatchQueue> queue, Completion completion) = 0;
};

} // namespace zentavo::platform
