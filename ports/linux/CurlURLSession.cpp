#include "ports/linux/CurlURLSession.h"

#include <utility>

namespace zentavo::linux_port {

std::shared_ptr<platform::URLTask> CurlURLSession::start(std::shared_ptr<const platform::URLRequest> request,
                                                         std::shared_ptr<platform::DispatchQueue> queue,
                                                         Completion completion) {
    auto task = std::make_shared<CurlTask>(network_, std::move(request), std::move(queue), std::move(completion));
    network_.start(task);
    return task;
}

} // namespace zentavo::linux_port
