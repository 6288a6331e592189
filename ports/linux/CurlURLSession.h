#pragma once

#include <memory>

#include "ports/linux/CurlNetworkThread.h"
#include "zentavo/platform/URLSession.h"

namespace zentavo::linux_port {

/// Sends requests with libcurl. `CurlNetworkThread` says what `start` costs.
class CurlURLSession final : public platform::URLSession {
public:
    explicit CurlURLSession(CurlNetworkThread& network) : network_(network) {}

    std::shared_ptr<platform::URLTask> start(std::shared_ptr<const platform::URLRequest> request,
                                             std::shared_ptr<platform::DispatchQueue> queue,
                                             Completion completion) override;

private:
    CurlNetworkThread& network_; ///< outlives its sessions and their tasks
};

} // namespace zentavo::linux_port
