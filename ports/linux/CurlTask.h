#pragma once

#include <atomic>
#include <memory>
#include <string_view>

#include "zentavo/platform/URLSession.h"

namespace zentavo::linux_port {

class CurlNetworkThread;
class CurlTransfer;

/// One exchange from `start` to its completion. While it waits for its turn this is all that it costs, besides the
/// request: ten thousand of them may wait.
class CurlTask final : public platform::URLTask, public std::enable_shared_from_this<CurlTask> {
public:
    CurlTask(CurlNetworkThread& network, std::shared_ptr<const platform::URLRequest> request,
             std::shared_ptr<platform::DispatchQueue> queue, platform::URLSession::Completion completion);

    void cancel() override;

    /// On the caller's queue: tells the caller how the exchange ended.
    void tell(platform::URLResult result);

    /// The queue on which `tell` is to be called.
    const std::shared_ptr<platform::DispatchQueue>& queue() const { return queue_; }

    // What follows is the network thread's alone.

    /// Null once the exchange is over.
    std::shared_ptr<const platform::URLRequest> request;
    /// Set while the exchange is under way.
    CurlTransfer* transfer = nullptr;

private:
    CurlNetworkThread& network_; ///< outlives its tasks
    std::shared_ptr<platform::DispatchQueue> queue_;
    platform::URLSession::Completion completion_;
    std::atomic<bool> cancelled_ = false;
};

/// The part of an http URL that names the host, its port and how to speak to it: "https://shop.example:8443".
std::string_view origin(const URL& url);

} // namespace zentavo::linux_port
