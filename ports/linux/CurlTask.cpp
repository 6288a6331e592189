#include "ports/linux/CurlTask.h"

#include <utility>

#include "ports/linux/CurlNetworkThread.h"

namespace zentavo::linux_port {

CurlTask::CurlTask(CurlNetworkThread& network, std::shared_ptr<const platform::URLRequest> asked,
                   std::shared_ptr<platform::DispatchQueue> queue, platform::URLSession::Completion completion)
    : request(std::move(asked)), network_(network), queue_(std::move(queue)), completion_(std::move(completion)) {}

void CurlTask::cancel() {
    if (!cancelled_.exchange(true)) {
        network_.cancel(shared_from_this());
    }
}

void CurlTask::tell(platform::URLResult result) {
    if (cancelled_) { // perhaps only after the network was done with it
        result = {{}, {}, platform::URLError{platform::URLErrorKind::cancelled, "cancelled"}};
    }
    const auto completion = std::exchange(completion_, nullptr);
    completion(std::move(result));
}

std::string_view origin(const URL& url) {
    const std::string_view text = url.text();
    return text.substr(0, static_cast<std::size_t>(url.path().data() - text.data()));
}

} // namespace zentavo::linux_port
