#include "ports/linux/HostLimiter.h"

#include <utility>

namespace zentavo::linux_port {

bool HostLimiter::admit(const std::shared_ptr<CurlTask>& task) {
    const auto key = origin(task->request->url);
    auto found = hosts_.find(key);
    if (found == hosts_.end()) {
        found = hosts_.emplace(key, Host{}).first;
    }
    auto& host = found->second;
    if (host.active < host.limit) {
        ++host.active;
        return true;
    }
    host.waiting.push_back(task);
    return false;
}

std::string_view HostLimiter::full() const {
    for (const auto& [key, host] : hosts_) {
        if (host.active >= host.limit) {
            return key;
        }
    }
    return {};
}

std::vector<std::shared_ptr<CurlTask>> HostLimiter::release(std::string_view origin, std::optional<bool> multiplexed) {
    std::vector<std::shared_ptr<CurlTask>> begin;
    const auto found = hosts_.find(origin);
    auto& host = found->second;
    --host.active;
    if (multiplexed) {
        host.limit = *multiplexed ? multiplexedLimit : limit;
    }
    while (host.active < host.limit && !host.waiting.empty()) {
        auto task = std::move(host.waiting.front());
        host.waiting.pop_front();
        if (task->request) {
            ++host.active;
            begin.push_back(std::move(task));
        }
    }
    if (host.active == 0) {
        hosts_.erase(found); // nothing waits either
    }
    return begin;
}

} // namespace zentavo::linux_port
