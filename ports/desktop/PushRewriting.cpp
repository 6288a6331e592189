#include "ports/desktop/PushRewriting.h"

#include <csignal>
#include <system_error>
#include <utility>

#include <pthread.h>

namespace zentavo::desktop {

PushRewriting::~PushRewriting() {
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool PushRewriting::start(platform::NotificationRequest request, std::shared_ptr<platform::DispatchQueue> queue,
                          std::function<void(platform::NotificationContent)> rewritten, platform::Block returned) {
    const auto handler = [queue, rewritten = std::move(rewritten)](platform::NotificationContent content) {
        queue->async([rewritten, content = std::move(content)] { rewritten(content); });
    };
    // Signals are for the program's own threads.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        thread_ = std::thread(
            [extension = extension_, queue, request = std::move(request), handler, returned = std::move(returned)] {
                extension->didReceive(request, handler);
                queue->async(returned);
            });
        pthread_setname_np(thread_.native_handle(), "zentavo-push");
    } catch (const std::system_error&) {
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread_.joinable();
}

void PushRewriting::expire() { extension_->serviceExtensionTimeWillExpire(); }

void PushRewriting::leave() {
    if (thread_.joinable()) {
        thread_.detach();
    }
}

} // namespace zentavo::desktop
