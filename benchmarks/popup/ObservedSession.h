#pragma once

#include <functional>
#include <memory>
#include <string>

#include <zentavo/platform/URLSession.h>

namespace bench {

/// Hands requests on, and tells of each answer of the delivery service before the SDK gets it, on the SDK's worker.
class ObservedSession final : public zentavo::platform::URLSession {
public:
    using Observer = std::function<void(const std::string& answer)>;

    ObservedSession(std::shared_ptr<URLSession> session, Observer observer)
        : session_(std::move(session)), observer_(std::move(observer)) {}

    std::shared_ptr<zentavo::platform::URLTask> start(std::shared_ptr<const zentavo::platform::URLRequest> request,
                                                      std::shared_ptr<zentavo::platform::DispatchQueue> queue,
                                                      Completion completion) override {
        if (!request->url.path().ends_with("/interaction/v2")) {
            return session_->start(std::move(request), std::move(queue), std::move(completion));
        }
        return session_->start(std::move(request), std::move(queue),
                               [observer = observer_, completion](zentavo::platform::URLResult result) {
                                   if (result.data) {
                                       observer(*result.data);
                                   }
                                   completion(std::move(result));
                               });
    }

private:
    const std::shared_ptr<URLSession> session_;
    const Observer observer_;
};

} // namespace bench
