#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/URLSession.h"

namespace zentavo::testing {

/// What a scripted exchange ends with: an answer, or `error` instead of one.
struct ScriptedAnswer {
    int status = 200;
    std::string body = "{}";
    std::vector<platform::Header> headers = {};
    std::optional<platform::URLErrorKind> error = {};
    bool withheld = false; ///< leaves the exchange open: the test answers later, or never does

    static ScriptedAnswer failure(platform::URLErrorKind kind) { return {0, {}, {}, kind}; }
    static ScriptedAnswer never() { return {.withheld = true}; }
};

/// Which requests a rule is for. Empty text matches everything.
struct RequestMatch {
    std::string method = {};
    std::string host = {};
    std::string pathPrefix = {};
};

/// A network without one: remembers every request and answers by the test's rules, through the queue of the caller. Any
/// thread.
class ZENTAVO_EXPORT ScriptedURLSession : public platform::URLSession {
public:
    /// Decides on one request; none leaves it to the next rule.
    using Handler = std::function<std::optional<ScriptedAnswer>(const platform::URLRequest&)>;
    using Requests = std::vector<std::shared_ptr<const platform::URLRequest>>;
    static constexpr std::size_t forever = std::numeric_limits<std::size_t>::max();

    ScriptedURLSession();
    ~ScriptedURLSession() override;

    /// Answers matching requests, `times` of them. The rule added last is asked first, a used-up one never again.
    void on(RequestMatch match, ScriptedAnswer answer, std::size_t times = forever);
    void on(RequestMatch match, Handler handler);
    /// What requests get that no rule is for: status 200 with the body "{}" unless told otherwise.
    void setDefault(ScriptedAnswer answer);

    /// From now on nothing is answered by itself; the test calls `answer`, or never does.
    void hold(bool on = true);
    /// Ends exchange `index`, counted from 0 in the order of `start`. False when it has ended already.
    bool answer(std::size_t index, ScriptedAnswer answer);

    /// Every request so far, in the order of `start`.
    Requests requests() const;
    std::size_t count() const;
    /// Exchanges that have not ended.
    std::size_t open() const;
    /// Forgets requests and what is open, which then never ends; rules stay.
    void clear();

    std::shared_ptr<platform::URLTask> start(std::shared_ptr<const platform::URLRequest> request,
                                             std::shared_ptr<platform::DispatchQueue> queue,
                                             Completion completion) override;

private:
    class Task;
    struct Rule;

    std::optional<ScriptedAnswer> decide(const platform::URLRequest& request);

    mutable Mutex mutex_;
    std::vector<std::shared_ptr<Rule>> rules_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<std::shared_ptr<Task>> tasks_ ZENTAVO_GUARDED_BY(mutex_);
    ScriptedAnswer default_ ZENTAVO_GUARDED_BY(mutex_);
    bool holding_ ZENTAVO_GUARDED_BY(mutex_) = false;
};

} // namespace zentavo::testing
