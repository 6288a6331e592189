#include "zentavo/push/ImageFetch.h"

#include <atomic>
#include <future>
#include <utility>

namespace zentavo {

namespace {

/// Runs what is posted at once, on the posting thread. Only for a completion that does nothing but wake a waiting
/// thread: no queue has to have a thread to spare for it.
class ImmediateQueue final : public platform::DispatchQueue {
public:
    void async(platform::Block block) override { block(); }
    platform::TimerId after(std::chrono::nanoseconds, platform::Block) override { return 0; }
    bool cancel(platform::TimerId) override { return false; }
};

Result<std::string> pictureIn(platform::URLResult result) {
    if (result.error) {
        return Error{std::move(result.error->message)};
    }
    const int status = result.response ? result.response->status : 0;
    if (status < 200 || status > 299) {
        return Error{"the answer has status " + std::to_string(status)};
    }
    if (!result.data || result.data->empty()) {
        return Error{"the answer is empty"};
    }
    return *std::move(result.data);
}

} // namespace

/// Settled once, by whoever comes first.
struct ImageFetch::Outcome {
    std::promise<Result<std::string>> promise;
    std::future<Result<std::string>> future = promise.get_future();
    std::atomic<bool> settled = false;

    void settle(Result<std::string> result) {
        if (!settled.exchange(true)) {
            promise.set_value(std::move(result));
        }
    }
};

ImageFetch::ImageFetch(std::shared_ptr<platform::URLSession> session)
    : session_(std::move(session)), outcome_(std::make_shared<Outcome>()) {}

Result<std::string> ImageFetch::get(const URL& url) {
    if (!outcome_->settled) {
        auto request = std::make_shared<platform::URLRequest>(url);
        request->idleTimeout = longest;
        request->totalTimeout = longest;
        request->maximumAnswerBytes = maximumBytes;
        const auto task =
            session_->start(std::move(request), std::make_shared<ImmediateQueue>(),
                            [outcome = outcome_](platform::URLResult result) { outcome->settle(pictureIn(result)); });
        // The session keeps the time; this is for one that has stopped answering, as when the process exits.
        if (outcome_->future.wait_for(longest + std::chrono::seconds(1)) != std::future_status::ready) {
            outcome_->settle(Error{"no answer"});
        }
        task->cancel(); // nothing where it has ended
    }
    return outcome_->future.get();
}

void ImageFetch::cancel() { outcome_->settle(Error{"cancelled"}); }

} // namespace zentavo
