#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "zentavo/core/DebugLog.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/URL.h"
#include "zentavo/foundation/Value.h"
#include "zentavo/platform/Platform.h"

namespace zentavo {

/// Sends JSON requests, and repeats failed ones by `RetryRule`. Held by `std::shared_ptr`; a client that is gone by the
/// time its request fails repeats nothing. Any thread.
///
/// A completion is called once, on the SDK's worker, with the answer's bytes or an error, whatever the status; repeated
/// requests call none. Requests not yet answered hold at most `maximumHeldBytes` of bodies; one beyond that is refused,
/// logged, and its completion told.
class HTTPClient : public std::enable_shared_from_this<HTTPClient> {
public:
    using Completion = std::function<void(std::optional<std::string> data, std::optional<Error> error)>;

    static constexpr std::size_t maximumHeldBytes = 64U << 20U;

    HTTPClient(std::shared_ptr<platform::Platform> platform, std::shared_ptr<DebugLog> log);

    /// `body` is serialised here; one that JSON cannot say is logged and dropped, and the completion told.
    void request(URL url, std::string method, const Map& body, Completion completion);
    /// `body` is JSON text already.
    void request(URL url, std::string method, Result<std::string> body, Completion completion);
    /// As above, for text that the caller keeps a hold of.
    void request(URL url, std::string method, Result<std::shared_ptr<const std::string>> body, Completion completion);
    /// No body and no "Content-Type".
    void get(URL url, Completion completion);
    void put(URL url, const Map& body, Completion completion) {
        request(std::move(url), "PUT", body, std::move(completion));
    }

    const std::shared_ptr<DebugLog>& log() const noexcept { return log_; }

private:
    using Request = std::shared_ptr<const platform::URLRequest>;
    struct HeldBytes;
    struct HeldRequest;
    struct SameRequest {
        std::size_t operator()(const Request& request) const noexcept { return request->hash(); }
        bool operator()(const Request& a, const Request& b) const { return *a == *b; }
    };

    void start(URL url, std::string method, std::shared_ptr<const std::string> body, Completion completion);
    void retry(const Request& request);
    void startAgain(const Request& request);
    void forget(const Request& request);
    void refuse(const Error& error, const Completion& completion) const;

    const std::shared_ptr<platform::Platform> platform_;
    const std::shared_ptr<DebugLog> log_;
    /// Completions and delayed retries run here.
    const std::shared_ptr<platform::DispatchQueue> concurrent_;
    const std::shared_ptr<HeldBytes> held_;
    /// Of every request with a body.
    const platform::Headers headers_{{"Content-Type", "application/json"}};

    Mutex mutex_;
    std::unordered_map<Request, int, SameRequest, SameRequest> failedRequestsCount_ ZENTAVO_GUARDED_BY(mutex_);
    /// When the retry period ends that the last first failure began.
    std::optional<platform::TimePoint> stopTimeRetry_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo
