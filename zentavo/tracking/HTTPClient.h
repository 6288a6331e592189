#pragma once

#include <chrono>
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
#include "zentavo/tracking/RequestDigest.h"

namespace zentavo {

/// Sends JSON requests, and repeats failed ones by `RetryRule`. Held by `std::shared_ptr`; a client that is gone by the
/// time its request fails repeats nothing. Any thread.
///
/// A completion is called once, on the SDK's worker, with the answer's bytes or an error, whatever the status; repeated
/// requests call none. Failures are logged here, with what happens next, so a completion need not log its error.
///
/// Requests that wait for an answer or for their retry hold at most `maximumHeldBytes` of bodies; one beyond that is
/// refused, logged, and its completion told.
class HTTPClient : public std::enable_shared_from_this<HTTPClient> {
public:
    using Completion = std::function<void(std::optional<std::string> data, std::optional<Error> error)>;

    static constexpr std::size_t maximumHeldBytes = 64U << 20U;
    /// Of how many different requests failures are counted. One more, and all counts begin anew.
    static constexpr std::size_t maximumCounted = 10'000;
    /// Kept under its name, read by nothing.
    static constexpr int requestCounter = 1;

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

    void start(URL url, std::string method, std::shared_ptr<const std::string> body, Completion completion);
    /// Has a failed request sent once more, after the time that is returned; none where its retry period is over.
    std::optional<std::chrono::seconds> retry(const Request& request);
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
    /// How often each request has failed. By digest: a count must not keep a body in memory that nobody will send.
    std::unordered_map<RequestDigest, int, RequestDigest::Hash> failedRequestsCount_ ZENTAVO_GUARDED_BY(mutex_);
    /// When the retry period ends that the last first failure began.
    std::optional<platform::TimePoint> stopTimeRetry_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo
