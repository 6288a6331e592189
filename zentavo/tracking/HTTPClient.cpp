#include "zentavo/tracking/HTTPClient.h"

#include <atomic>
#include <string_view>

#include "zentavo/foundation/Fault.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/tracking/RetryRule.h"

namespace zentavo {

namespace {

/// Answers of the services are small; what is longer is not theirs.
constexpr std::size_t maximumAnswerBytes = 8U << 20U;

bool succeeded(const platform::URLResult& result) noexcept { return result.response && result.response->status < 300; }

/// What went wrong; empty when nothing did.
std::string problem(const platform::URLResult& result) {
    if (result.error) {
        return result.error->message;
    }
    if (succeeded(result)) {
        return {};
    }
    return result.response ? "status " + std::to_string(result.response->status) : "no answer";
}

/// A line about a request that failed, and when it is sent again.
void tell(const DebugLog& log, const std::string& problem, const platform::URLRequest& request,
          std::optional<std::chrono::seconds> delay) {
    if (!problem.empty() && log.enabled()) {
        log.write("Error: " + problem + "; " + request.method + ' ' + request.url.text() +
                  (delay ? " is sent again in " + std::to_string(delay->count()) + " s" : " is not sent again"));
    }
}

} // namespace

/// How many bytes of bodies the client's requests hold at the moment.
struct HTTPClient::HeldBytes {
    std::atomic<std::size_t> count{0};

    bool take(std::size_t bytes) noexcept {
        if (count.fetch_add(bytes, std::memory_order_relaxed) + bytes <= maximumHeldBytes) {
            return true;
        }
        give(bytes);
        return false;
    }
    void give(std::size_t bytes) noexcept { count.fetch_sub(bytes, std::memory_order_relaxed); }
};

/// A request that gives its bytes back when the last who holds it lets go: session or retry timer.
struct HTTPClient::HeldRequest {
    HeldRequest(URL url, std::shared_ptr<HeldBytes> account) : request(std::move(url)), held(std::move(account)) {}
    ~HeldRequest() { held->give(request.body ? request.body->size() : 0); }
    HeldRequest(const HeldRequest&) = delete;
    HeldRequest& operator=(const HeldRequest&) = delete;

    platform::URLRequest request;
    std::shared_ptr<HeldBytes> held;
};

HTTPClient::HTTPClient(std::shared_ptr<platform::Platform> platform, std::shared_ptr<DebugLog> log)
    : platform_(std::move(platform)), log_(std::move(log)),
      concurrent_(platform_->queues->make("Zentavo", platform::QueueKind::concurrent)),
      held_(std::make_shared<HeldBytes>()) {}

void HTTPClient::request(URL url, std::string method, const Map& body, Completion completion) {
    request(std::move(url), std::move(method), json::write(body), std::move(completion));
}

void HTTPClient::request(URL url, std::string method, Result<std::string> body, Completion completion) {
    if (!body) {
        refuse(body.error(), completion);
        return;
    }
    start(std::move(url), std::move(method), std::make_shared<const std::string>(*std::move(body)),
          std::move(completion));
}

void HTTPClient::request(URL url, std::string method, Result<std::shared_ptr<const std::string>> body,
                         Completion completion) {
    if (!body) {
        refuse(body.error(), completion);
        return;
    }
    start(std::move(url), std::move(method), *std::move(body), std::move(completion));
}

void HTTPClient::get(URL url, Completion completion) { start(std::move(url), "GET", nullptr, std::move(completion)); }

void HTTPClient::start(URL url, std::string method, std::shared_ptr<const std::string> body, Completion completion) {
    if (!held_->take(body ? body->size() : 0)) {
        refuse(Error{"too many requests are waiting for an answer; this one is dropped"}, completion);
        return;
    }
    auto owner = std::make_shared<HeldRequest>(std::move(url), held_);
    platform::URLRequest& draft = owner->request;
    draft.method = std::move(method);
    draft.maximumAnswerBytes = maximumAnswerBytes;
    if (body) {
        draft.headers = headers_;
        draft.body = std::move(body);
    }
    Request request(std::move(owner), &draft);

    auto finished = [weak = weak_from_this(), log = log_, request,
                     completion = std::move(completion)](platform::URLResult result) {
        const bool failed = !succeeded(result);
        std::string wrong;
        entryPoint("completion", [&] {
            if (log->enabled()) {
                wrong = problem(result);
            }
            if (completion && (result.data || result.error)) {
                std::optional<Error> error;
                if (!result.data) {
                    error = Error{std::move(result.error->message)};
                }
                completion(std::move(result.data), std::move(error));
            }
        });
        entryPoint("completion", [&] {
            const auto self = failed ? weak.lock() : nullptr;
            tell(*log, wrong, *request, self ? self->retry(request) : std::nullopt);
        });
    };
    platform_->urlSession->start(request, concurrent_, std::move(finished));
}

void HTTPClient::refuse(const Error& error, const Completion& completion) const {
    if (log_->enabled()) {
        log_->write("Error: " + error.message);
    }
    if (completion) {
        concurrent_->async([completion, error] { entryPoint("completion", [&] { completion(std::nullopt, error); }); });
    }
}

std::optional<std::chrono::seconds> HTTPClient::retry(const Request& request) {
    const RequestDigest digest(*request);
    const auto now = platform_->clock->now();
    std::optional<std::chrono::seconds> delay;
    {
        MutexLock lock(mutex_);
        if (failedRequestsCount_.size() >= maximumCounted && !failedRequestsCount_.contains(digest)) {
            failedRequestsCount_.clear();
        }
        const int attempt = ++failedRequestsCount_[digest];
        if (attempt == 1) {
            stopTimeRetry_ = now + RetryRule::period;
        }
        if (stopTimeRetry_) {
            delay = RetryRule::next(attempt, now, *stopTimeRetry_);
        }
        if (!delay) {
            stopTimeRetry_.reset();
            failedRequestsCount_.clear();
        }
    }
    if (delay) {
        // What was promised is sent also when the client is gone by then; only its bookkeeping is not kept up.
        concurrent_->after(*delay, [self = shared_from_this(), request] {
            entryPoint("completion", [&] { self->startAgain(request); });
        });
    }
    return delay;
}

void HTTPClient::startAgain(const Request& request) {
    auto finished = [self = shared_from_this(), request](platform::URLResult result) {
        entryPoint("completion", [&] {
            if (result.data) {
                self->forget(request);
                tell(*self->log_, problem(result), *request, std::nullopt);
            } else if (result.error) {
                if (self->log_->enabled()) {
                    self->log_->write("Error " + result.error->message);
                }
            } else {
                self->log_->write("No readable data received in response");
            }
        });
    };
    platform_->urlSession->start(request, concurrent_, std::move(finished));
}

void HTTPClient::forget(const Request& request) {
    const RequestDigest digest(*request);
    MutexLock lock(mutex_);
    failedRequestsCount_.erase(digest);
}

} // namespace zentavo
