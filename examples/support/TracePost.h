#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include <zentavo/inapp/DeliveryTrace.h>
#include <zentavo/platform/Platform.h>

namespace examples {

/// Tells the dev server what became of deliveries, for its page. Who is no dev server refuses it, and that is all. Copies
/// post in one line: a trace leaves when the one before it has been answered, so that no closing comes before what it
/// closes. For any thread.
class TracePost {
public:
    TracePost(std::shared_ptr<zentavo::platform::Platform> platform, const std::string& server)
        : line_(std::make_shared<Line>(std::move(platform), zentavo::URL::parse(server + "/_dev/trace"))) {}

    void operator()(const zentavo::DeliveryTrace& trace) const {
        if (line_->url) {
            Line::add(line_, std::make_shared<const std::string>(trace.json()));
        }
    }

private:
    using Body = std::shared_ptr<const std::string>;

    struct Line {
        Line(std::shared_ptr<zentavo::platform::Platform> system, std::optional<zentavo::URL> target)
            : platform(std::move(system)), url(std::move(target)),
              answers(platform->queues->make("traces", zentavo::platform::QueueKind::serial)) {}

        static void add(const std::shared_ptr<Line>& line, Body body) {
            {
                const std::lock_guard lock(line->mutex);
                if (std::exchange(line->isPosting, true)) {
                    line->waiting.push_back(std::move(body));
                    return;
                }
            }
            post(line, std::move(body));
        }

        static void post(const std::shared_ptr<Line>& line, Body body) {
            const auto request = std::make_shared<zentavo::platform::URLRequest>(*line->url);
            request->method = "POST";
            request->headers = {{"Content-Type", "application/json"}};
            request->body = std::move(body);
            line->platform->urlSession->start(request, line->answers, [line](const zentavo::platform::URLResult&) {
                if (Body next = line->next()) {
                    post(line, std::move(next));
                }
            });
        }

        /// Null when none waits; the line is then free.
        Body next() {
            const std::lock_guard lock(mutex);
            isPosting = !waiting.empty();
            if (!isPosting) {
                return nullptr;
            }
            Body body = std::move(waiting.front());
            waiting.pop_front();
            return body;
        }

        const std::shared_ptr<zentavo::platform::Platform> platform;
        const std::optional<zentavo::URL> url;
        const std::shared_ptr<zentavo::platform::DispatchQueue> answers;
        std::mutex mutex;
        std::deque<Body> waiting;
        bool isPosting = false;
    };

    std::shared_ptr<Line> line_;
};

} // namespace examples
