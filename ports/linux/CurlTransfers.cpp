#include "ports/linux/CurlTransfers.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

#include "ports/linux/CurlError.h"

namespace zentavo::linux_port {

using platform::URLErrorKind;
using platform::URLResult;

namespace {
/// Easy handles that stay when nothing is under way; each has its buffers.
constexpr std::size_t idleHandles = HostLimiter::limit;
/// Waking a queue's thread costs more than a request does: while more is under way, answers are gathered for this long.
constexpr std::chrono::milliseconds gathering{1};
} // namespace

CurlTransfers::CurlTransfers(const CurlLibrary& curl)
    : curl_(curl), multi_(curl_.curl_multi_init()), share_(curl_.curl_share_init()) {
    curl_.curl_multi_setopt(multi_, CURLMOPT_PIPELINING, static_cast<long>(CURLPIPE_MULTIPLEX));
    curl_.curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(HostLimiter::limit));
    // No lock functions: only this thread ever uses a handle. DNS answers and connections belong to the multi handle.
    curl_.curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    curl_.curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
}

CurlTransfers::~CurlTransfers() {
    for (const auto& transfer : active_) {
        curl_.curl_multi_remove_handle(multi_, transfer->handle());
    }
    active_.clear();
    idle_.clear();
    curl_.curl_multi_cleanup(multi_);
    curl_.curl_share_cleanup(share_);
}

void CurlTransfers::add(std::shared_ptr<CurlTask> task) {
    const auto& url = task->request->url;
    if (!url.isHTTP() || url.host().empty()) {
        auto error = errorAt(URLErrorKind::unsupportedURL, "Neither http nor https with a host: " + url.text(), url);
        finish(std::move(task), {{}, {}, std::move(error)});
    } else if (hosts_.admit(task)) {
        admitted_.push_back(std::move(task));
    }
}

void CurlTransfers::beginAdmitted() {
    while (!admitted_.empty()) { // one that cannot be sent makes room for the next at once
        auto task = std::move(admitted_.front());
        admitted_.pop_front();
        begin(std::move(task));
    }
}

void CurlTransfers::begin(std::shared_ptr<CurlTask> task) {
    if (idle_.empty()) {
        active_.push_back(std::make_unique<CurlTransfer>(curl_, share_));
    } else {
        active_.push_back(std::move(idle_.back()));
        idle_.pop_back();
    }
    auto& transfer = *active_.back();
    if (auto error = transfer.begin(std::move(task), std::chrono::steady_clock::now())) {
        finish(transfer, transfer.end(std::move(*error)));
        return;
    }
    curl_.curl_multi_add_handle(multi_, transfer.handle());
}

void CurlTransfers::cancel(const std::shared_ptr<CurlTask>& task) {
    URLResult result{{}, {}, platform::URLError{URLErrorKind::cancelled, "cancelled"}};
    if (task->transfer != nullptr) {
        finish(*task->transfer, std::move(result));
    } else if (task->request) {
        const auto place = std::find(admitted_.begin(), admitted_.end(), task);
        if (place != admitted_.end()) {
            admitted_.erase(place);
            leave(task->request->url, std::nullopt);
        }
        finish(task, std::move(result));
    }
}

void CurlTransfers::leave(const URL& url, std::optional<bool> multiplexed) {
    for (auto& next : hosts_.release(origin(url), multiplexed)) {
        admitted_.push_back(std::move(next));
    }
}

std::size_t CurlTransfers::turn() {
    beginAdmitted();
    int running = 0;
    curl_.curl_multi_perform(multi_, &running);
    int left = 0;
    while (const CURLMsg* message = curl_.curl_multi_info_read(multi_, &left)) {
        if (message->msg == CURLMSG_DONE) {
            auto& transfer = *CurlTransfer::of(curl_, message->easy_handle);
            finish(transfer, transfer.end(message->data.result));
        }
    }
    const auto now = std::chrono::steady_clock::now();
    finishOverdue(now);
    const bool busy = !active_.empty() || !admitted_.empty();
    return !ended_.empty() && (!busy || now >= deliverBy_) ? deliver() : 0;
}

void CurlTransfers::finish(CurlTransfer& transfer, URLResult result) {
    curl_.curl_multi_remove_handle(multi_, transfer.handle());
    auto task = transfer.takeTask();
    leave(task->request->url, transfer.multiplexed());
    finish(std::move(task), std::move(result));

    const auto place =
        std::find_if(active_.begin(), active_.end(), [&](const auto& one) { return one.get() == &transfer; });
    auto free = std::move(*place);
    active_.erase(place);
    if (idle_.size() < idleHandles) {
        idle_.push_back(std::move(free));
    }
}

void CurlTransfers::finish(std::shared_ptr<CurlTask> task, URLResult result) {
    task->request.reset();
    if (ended_.empty()) {
        deliverBy_ = std::chrono::steady_clock::now() + gathering;
    }
    ended_.push_back({std::move(task), std::move(result)});
}

void CurlTransfers::finishOverdue(CurlTransfer::Moment now) {
    for (std::size_t i = active_.size(); i-- > 0;) { // from behind: what ends takes its place with it
        if (auto error = active_[i]->overdue(now)) {
            finish(*active_[i], active_[i]->end(std::move(*error)));
        }
    }
}

std::size_t CurlTransfers::deliver() {
    const auto count = ended_.size();
    auto first = ended_.begin();
    while (first != ended_.end()) {
        const auto& queue = first->task->queue();
        const auto last =
            std::find_if(first, ended_.end(), [&](const Ended& one) { return one.task->queue() != queue; });
        const auto target = queue;
        target->async(
            [batch = std::vector<Ended>(std::make_move_iterator(first), std::make_move_iterator(last))]() mutable {
                for (auto& one : batch) {
                    std::exchange(one.task, nullptr)->tell(std::move(one.result));
                }
            });
        first = last;
    }
    ended_.clear();
    return count;
}

void CurlTransfers::wait() {
    if (!admitted_.empty()) {
        return;
    }
    auto next = ended_.empty() ? CurlTransfer::Moment::max() : deliverBy_;
    for (const auto& transfer : active_) {
        next = std::min(next, transfer->nextCheck());
    }
    int timeout = wakeUp_.works() ? std::numeric_limits<int>::max() : 50;
    if (next != CurlTransfer::Moment::max()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - std::chrono::steady_clock::now()).count();
        timeout = static_cast<int>(std::clamp<std::int64_t>(left, 0, timeout));
    }
    curl_waitfd wakeUp{wakeUp_.descriptor(), CURL_WAIT_POLLIN, 0};
    curl_.curl_multi_poll(multi_, &wakeUp, 1, timeout, nullptr);
    if (wakeUp.revents != 0) {
        wakeUp_.clear();
    }
}

void CurlTransfers::wake() { wakeUp_.signal(); }

} // namespace zentavo::linux_port
