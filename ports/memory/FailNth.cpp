#include "ports/memory/FailNth.h"

#include <utility>

namespace zentavo::testing {

namespace {
class NoTask : public platform::URLTask {
public:
    void cancel() override {}
};
} // namespace

FailNthURLSession::FailNthURLSession(std::shared_ptr<platform::URLSession> inner,
                                     std::shared_ptr<FailureCounter> counter)
    : inner_(std::move(inner)), counter_(std::move(counter)) {}

std::shared_ptr<platform::URLTask> FailNthURLSession::start(std::shared_ptr<const platform::URLRequest> request,
                                                            std::shared_ptr<platform::DispatchQueue> queue,
                                                            Completion completion) {
    if (!counter_->next()) {
        return inner_->start(std::move(request), std::move(queue), std::move(completion));
    }
    queue->async([completion = std::move(completion)] {
        completion({{}, {}, platform::URLError{platform::URLErrorKind::connectionLost, "made to fail"}});
    });
    return std::make_shared<NoTask>();
}

FailNthPreferences::FailNthPreferences(std::shared_ptr<platform::Preferences> inner,
                                       std::shared_ptr<FailureCounter> counter)
    : inner_(std::move(inner)), counter_(std::move(counter)) {}

std::optional<Value> FailNthPreferences::object(std::string_view key) const {
    return counter_->next() ? std::nullopt : inner_->object(key);
}

void FailNthPreferences::set(std::string_view key, Value value) {
    if (!counter_->next()) {
        inner_->set(key, std::move(value));
    }
}

void FailNthPreferences::remove(std::string_view key) {
    if (!counter_->next()) {
        inner_->remove(key);
    }
}

void FailNthPreferences::update(std::string_view key,
                                const std::function<std::optional<Value>(const std::optional<Value>&)>& change) {
    if (!counter_->next()) {
        inner_->update(key, change);
    }
}

void FailNthPreferences::synchronise() {
    if (!counter_->next()) {
        inner_->synchronise();
    }
}

} // namespace zentavo::testing
