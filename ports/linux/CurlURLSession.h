#pragma once

#include <memory>

#include "ports/linux/CurlNetworkThread.h"
#include "zentavo/platform/URLSession.h"

namespace zentavo::linux_port {

/// Sends requests with libcurl. See docs of `CurlNetworkThread` for what `start` costs.
class CurlURLSession final : public platform::URLSession {
public:
    explicit CurlURLSession(std::shared_ptr<CurlNetworkThread> network) : network_(std::move(network)) {}

    std::shared_ptr<platform::URLTask> start(std::shared_ptr<const platform::URLRequest> request,
                                             std::shared_ptr<platform::DispatchQueue> queue,
                                             Completion completion) override;

private:
    std::shared_ptr<CurlNetworkThread> network_;
};

} // namespace zentavo::linux_port
