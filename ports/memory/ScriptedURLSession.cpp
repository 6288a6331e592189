#include "ports/memory/ScriptedURLSession.h"

#include <atomic>
#include <utility>

namespace zentavo::testing {

using platform::DispatchQueue;
using platform::URLError;
using platform::URLErrorKind;
using platform::URLRequest;
using platform::URLResponse;
using platform::URLResult;

namespace {

bool matches(const RequestMatch& match, const URLRequest& request) {
    return (match.method.empty() || match.method == request.method) &&
           (match.host.empty() || match.host == request.url.host()) &&
           request.url.path().substr(0, match.pathPrefix.size()) == match.pathPrefix;
}

URLResult resultOf(ScriptedAnswer answer) {
    URLResult result;
    if (answer.error) {
        result.error = URLError{*answer.error, "scripted"};
        return result;
    }
    result.data = std::move(answer.body);
    result.response = URLResponse{answer.status, std::move(answer.headers)};
    return result;
}

} // namespace

class ScriptedURLSession::Task : public platform::URLTask, public std::enable_shared_from_this<Task> {
public:
    Task(std::shared_ptr<const URLRequest> request, std::shared_ptr<DispatchQueue> queue, Completion completion)
        : request_(std::move(request)), queue_(std::move(queue)), completion_(std::move(completion)) {}

    const std::shared_ptr<const URLRequest>& request() const { return request_; }
    bool ended() const { return state_ != State::open; }

    bool end(URLResult result) {
        auto expected = State::open;
        if (!state_.compare_exchange_strong(expected, State::ending)) {
            return false;
        }
        queue_->async(
            [self = shared_from_this(), result = std::move(result)]() mutable { self->tell(std::move(result)); });
        return true;
    }

    void cancel() override {
        const auto before = state_.exchange(State::cancelled);
        if (before == State::open) {
            queue_->async([self = shared_from_this()] { self->tell({}); });
        }
    }

private:
    enum class State { open, ending, cancelled };

    void tell(URLResult result) {
        if (state_ == State::cancelled) {
            result = URLResult{{}, {}, URLError{URLErrorKind::cancelled, "cancelled"}};
        }
        auto completion = std::exchange(completion_, nullptr);
        completion(std::move(result));
    }

    const std::shared_ptr<const URLRequest> request_;
    const std::shared_ptr<DispatchQueue> queue_;
    std::atomic<State> state_ = State::open;
    Completion completion_; ///< on the queue only
};

struct ScriptedURLSession::Rule {
    RequestMatch match;
    Handler handler;
    std::size_t left = forever;
};

ScriptedURLSession::ScriptedURLSession() = default;
ScriptedURLSession::~ScriptedURLSession() = default;

void ScriptedURLSession::on(RequestMatch match, ScriptedAnswer answer, std::size_t times) {
    auto rule = std::make_shared<Rule>();
    *rule = {std::move(match), [answer = std::move(answer)](const URLRequest&) { return answer; }, times};
    MutexLock lock(mutex_);
    rules_.push_back(std::move(rule));
}

void ScriptedURLSession::on(RequestMatch match, Handler handler) {
    auto rule = std::make_shared<Rule>();
    *rule = {std::move(match), std::move(handler), forever};
    MutexLock lock(mutex_);
    rules_.push_back(std::move(rule));
}

void ScriptedURLSession::setDefault(ScriptedAnswer answer) {
    MutexLock lock(mutex_);
    default_ = std::move(answer);
}

void ScriptedURLSession::hold(bool on) {
    MutexLock lock(mutex_);
    holding_ = on;
}

bool ScriptedURLSession::answer(std::size_t index, ScriptedAnswer answer) {
    MutexLock lock(mutex_);
    if (index >= tasks_.size()) {
        return false;
    }
    const auto task = tasks_[index];
    lock.unlock();
    return task->end(resultOf(std::move(answer)));
}

ScriptedURLSession::Requests ScriptedURLSession::requests() const {
    MutexLock lock(mutex_);
    Requests result;
    result.reserve(tasks_.size());
    for (const auto& task : tasks_) {
        result.push_back(task->request());
    }
    return result;
}

std::size_t ScriptedURLSession::count() const {
    MutexLock lock(mutex_);
    return tasks_.size();
}

std::size_t ScriptedURLSession::open() const {
    MutexLock lock(mutex_);
    std::size_t result = 0;
    for (const auto& task : tasks_) {
        result += task->ended() ? 0 : 1;
    }
    return result;
}

void ScriptedURLSession::clear() {
    std::vector<std::shared_ptr<Task>> dropped; // completions are destroyed after the lock is gone
    MutexLock lock(mutex_);
    dropped.swap(tasks_);
    lock.unlock();
}

std::optional<ScriptedAnswer> ScriptedURLSession::decide(const URLRequest& request) {
    MutexLock lock(mutex_);
    if (holding_) {
        return std::nullopt;
    }
    const auto rules = rules_; // handlers are the test's code: never under the lock
    auto answer = default_;
    lock.unlock();
    for (auto it = rules.rbegin(); it != rules.rend(); ++it) {
        auto& rule = **it;
        if (!matches(rule.match, request)) {
            continue;
        }
        lock.lock();
        const bool usedUp = rule.left == 0;
        if (!usedUp && rule.left != forever) {
            --rule.left;
        }
        lock.unlock();
        if (usedUp) {
            continue;
        }
        if (auto decided = rule.handler(request)) {
            return decided;
        }
    }
    return answer;
}

std::shared_ptr<platform::URLTask> ScriptedURLSession::start(std::shared_ptr<const URLRequest> request,
                                                             std::shared_ptr<DispatchQueue> queue,
                                                             Completion completion) {
    auto task = std::make_shared<Task>(request, std::move(queue), std::move(completion));
    {
        MutexLock lock(mutex_);
        tasks_.push_back(task);
    }
    if (!request->url.isHTTP()) {
        task->end(resultOf(ScriptedAnswer::failure(URLErrorKind::unsupportedURL)));
    } else if (auto answer = decide(*request); answer && !answer->withheld) {
        task->end(resultOf(std::move(*answer)));
    }
    return task;
}

} // namespace zentavo::testing
