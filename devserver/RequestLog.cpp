#include "devserver/RequestLog.h"

#include <algorithm>
#include <utility>

namespace zentavo::devserver {

namespace {

/// Numbers ascend, with gaps only where nothing was kept.
auto firstAfter(const std::deque<RequestLog::Shared>& requests, std::uint64_t number) {
    return std::ranges::upper_bound(requests, number, {}, [](const RequestLog::Shared& r) { return r->number; });
}

} // namespace

RequestLog::Shared RequestLog::add(LoggedRequest request) {
    auto shared = std::make_shared<LoggedRequest>(std::move(request));
    const std::size_t weight = shared->weight();
    // What falls out is freed after the lock is let go.
    std::vector<Shared> fallen;
    MutexLock lock(mutex_);
    shared->number = ++lastNumber_;
    ++counters_.total;
    if (!shared->findings.problems.empty()) {
        ++counters_.withProblems;
    }
    requests_.push_back(shared);
    bytes_ += weight;
    while (requests_.size() > 1 && (requests_.size() > bounds_.requests || bytes_ > bounds_.bytes)) {
        bytes_ -= requests_.front()->weight();
        fallen.push_back(std::move(requests_.front()));
        requests_.pop_front();
        ++counters_.dropped;
    }
    lock.unlock();
    changed_.notify_all();
    return shared;
}

void RequestLog::clear() {
    std::deque<Shared> fallen;
    {
        MutexLock lock(mutex_);
        fallen.swap(requests_);
        bytes_ = 0;
        counters_ = {};
        ++clearings_;
    }
    changed_.notify_all();
}

void RequestLog::close() {
    {
        MutexLock lock(mutex_);
        closed_ = true;
    }
    changed_.notify_all();
}

RequestLog::Shared RequestLog::find(std::uint64_t number) const {
    MutexLock lock(mutex_);
    const auto at = std::ranges::lower_bound(requests_, number, {}, [](const Shared& r) { return r->number; });
    return at != requests_.end() && (*at)->number == number ? *at : nullptr;
}

std::vector<RequestLog::Shared> RequestLog::select(const RequestFilter& filter, std::size_t limit) const {
    std::vector<Shared> found;
    MutexLock lock(mutex_);
    for (auto at = requests_.rbegin(); at != requests_.rend() && found.size() < limit; ++at) {
        if (filter.matches(**at)) {
            found.push_back(*at);
        }
    }
    lock.unlock();
    std::ranges::reverse(found);
    return found;
}

RequestLog::Counters RequestLog::counters() const {
    MutexLock lock(mutex_);
    Counters counters = counters_;
    counters.kept = requests_.size();
    counters.bytes = bytes_;
    return counters;
}

RequestLog::Position RequestLog::end() const {
    MutexLock lock(mutex_);
    return {lastNumber_, clearings_};
}

bool RequestLog::waitFor(const RequestFilter& filter, std::size_t count, Deadline deadline) const {
    // Only what came since the last look is looked at: a waiting test must not slow the requests that it waits for.
    Position seen;
    std::size_t matches = 0;
    MutexLock lock(mutex_);
    while (true) {
        if (seen.clearings != clearings_) {
            matches = 0;
            seen.clearings = clearings_;
        }
        for (auto at = firstAfter(requests_, seen.number); at != requests_.end(); ++at) {
            matches += filter.matches(**at) ? 1 : 0;
        }
        seen.number = lastNumber_;
        if (matches >= count) {
            return true;
        }
        if (closed_ || std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        changed_.wait_until(lock, deadline);
    }
}

RequestLog::News RequestLog::newsSince(Position from, std::size_t limit) const {
    MutexLock lock(mutex_);
    News news;
    news.position = {lastNumber_, clearings_};
    news.cleared = from.clearings != clearings_;
    auto at = firstAfter(requests_, from.number);
    const auto count = static_cast<std::size_t>(requests_.end() - at);
    if (count > limit) {
        news.skipped = count - limit;
        at += static_cast<std::ptrdiff_t>(count - limit);
    }
    news.requests.assign(at, requests_.end());
    return news;
}

} // namespace zentavo::devserver
