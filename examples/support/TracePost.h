#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <zentavo/inapp/DeliveryTrace.h>
#include <zentavo/platform/Platform.h>

namespace examples {

/// Tells the dev server what became of deliveries, for its page. Who is no dev server refuses it, and that is all.
class TracePost {
public:
    TracePost(std::shared_ptr<zentavo::platform::Platform> platform, const std::string& server)
        : platform_(std::move(platform)), url_(zentavo::URL::parse(server + "/_dev/trace")),
          answers_(platform_->queues->make("traces", zentavo::platform::QueueKind::serial)) {}

    void operator()(const zentavo::DeliveryTrace& trace) const {
        if (!url_) {
            return;
        }
        const auto request = std::make_shared<zentavo::platform::URLRequest>(*url_);
        request->method = "POST";
        request->headers = {{"Content-Type", "application/json"}};
        request->body = std::make_shared<const std::string>(trace.json());
        platform_->urlSession->start(request, answers_, [](const zentavo::platform::URLResult&) {});
    }

private:
    std::shared_ptr<zentavo::platform::Platform> platform_;
    std::optional<zentavo::URL> url_;
    std::shared_ptr<zentavo::platform::DispatchQueue> answers_;
};

} // namespace examples
