#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "zentavo/platform/Preferences.h"
#include "zentavo/platform/URLSession.h"

namespace zentavo::testing {

/// Counts calls, and says which one is to fail. A test loops n = 0, 1, 2 … until nothing fails any more, and so walks
/// every point of failure.
class ZENTAVO_EXPORT FailureCounter {
public:
    /// Call `n`, counted from 0, fails; every other call is left alone.
    explicit FailureCounter(std::size_t n) : n_(n) {}

    bool next() { return calls_.fetch_add(1) == n_; }
    /// Whether call `n` has come.
    bool reached() const { return calls_ > n_; }

private:
    const std::size_t n_;
    std::atomic<std::size_t> calls_ = 0;
};

/// The n-th request finds that the connection is lost.
class ZENTAVO_EXPORT FailNthURLSession : public platform::URLSession {
public:
    FailNthURLSession(std::shared_ptr<platform::URLSession> inner, std::shared_ptr<FailureCounter> counter);

    std::shared_ptr<platform::URLTask> start(std::shared_ptr<const platform::URLRequest> request,
                                             std::shared_ptr<platform::DispatchQueue> queue,
                                             Completion completion) override;

private:
    std::shared_ptr<platform::URLSession> inner_;
    std::shared_ptr<FailureCounter> counter_;
};

/// The n-th call fails: a read finds nothing, a write is lost.
class ZENTAVO_EXPORT FailNthPreferences : public platform::Preferences {
public:
    FailNthPreferences(std::shared_ptr<platform::Preferences> inner, std::shared_ptr<FailureCounter> counter);

    std::optional<Value> object(std::string_view key) const override;
    void set(std::string_view key, Value value) override;
    void remove(std::string_view key) override;
    void update(std::string_view key,
                const std::function<std::optional<Value>(const std::optional<Value>&)>& change) override;
    void synchronise() override;

private:
    std::shared_ptr<platform::Preferences> inner_;
    std::shared_ptr<FailureCounter> counter_;
};

} // namespace zentavo::testing
