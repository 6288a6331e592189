#include "ports/linux/CurlNetworkThread.h"

#include <utility>

#include "ports/linux/CurlLibrary.h"

namespace zentavo::linux_port {

namespace {
/// A burst may leave room for this many requests behind; more is given back.
constexpr std::size_t keptCapacity = 1024;
} // namespace

CurlNetworkThread::CurlNetworkThread(std::function<void()> libraryLoaded)
    : libraryLoaded_(std::move(libraryLoaded)), thread_("zentavo-network") {}

CurlNetworkThread::~CurlNetworkThread() { end(std::chrono::hours(1)); }

void CurlNetworkThread::start(std::shared_ptr<CurlTask> task) {
    if (closed_) {
        return;
    }
    MutexLock lock(mutex_);
    const bool canBegin = full_.empty() || origin(task->request->url) != full_;
    inbox_.push_back(std::move(task));
    ++open_;
    if (!started_) {
        started_ = thread_.start([this] { run(); });
    }
    const bool wake = asleep_ && canBegin;
    if (wake) {
        asleep_ = false;
    }
    lock.unlock();
    if (wake) {
        transfers_->wake();
    }
    moreCame_.notify_one();
}

void CurlNetworkThread::cancel(std::shared_ptr<CurlTask> task) {
    if (closed_) {
        return;
    }
    MutexLock lock(mutex_);
    cancelled_.push_back(std::move(task));
    const bool wake = std::exchange(asleep_, false);
    lock.unlock();
    if (wake) {
        transfers_->wake();
    }
}

bool CurlNetworkThread::refuseAll(const Error& error) {
    MutexLock lock(mutex_);
    const auto tasks = std::exchange(inbox_, {});
    cancelled_.clear();
    lock.unlock();
    for (const auto& task : tasks) {
        task->request.reset();
        task->queue()->async([task, reason = error.message] {
            task->tell({{}, {}, platform::URLError{platform::URLErrorKind::other, reason}});
        });
    }
    over(tasks.size());
    lock.lock();
    while (inbox_.empty() && !ended_) {
        moreCame_.wait(lock);
    }
    return !ended_;
}

void CurlNetworkThread::run() {
    auto library = CurlLibrary::open();
    while (!library) {
        if (!refuseAll(library.error())) {
            return;
        }
        library = CurlLibrary::open();
    }
    if (libraryLoaded_) {
        libraryLoaded_();
    }
    transfers_ = std::make_unique<CurlTransfers>(*library);
    while (takeInbox()) {
        over(transfers_->turn());
        if (fallAsleep()) {
            transfers_->wait();
        }
    }
}

bool CurlNetworkThread::takeInbox() {
    MutexLock lock(mutex_);
    asleep_ = false;
    if (ended_) {
        return false;
    }
    taken_.swap(inbox_);
    const auto cancelled = std::exchange(cancelled_, {});
    lock.unlock();
    for (auto& task : taken_) {
        transfers_->add(std::move(task));
    }
    taken_.clear();
    if (taken_.capacity() > keptCapacity) {
        taken_ = {};
    }
    for (const auto& task : cancelled) {
        transfers_->cancel(task);
    }
    return true;
}

bool CurlNetworkThread::fallAsleep() {
    MutexLock lock(mutex_);
    asleep_ = inbox_.empty() && cancelled_.empty() && !ended_;
    full_ = transfers_->full();
    return asleep_;
}

void CurlNetworkThread::over(std::size_t count) {
    if (count == 0) {
        return;
    }
    MutexLock lock(mutex_);
    open_ -= count;
    const bool drained = open_ == 0;
    lock.unlock();
    if (drained) {
        drained_.notify_all();
    }
}

void CurlNetworkThread::drain(std::chrono::milliseconds bound) {
    closed_ = true;
    if (!thread_.exists()) {
        return;
    }
    const auto until = std::chrono::steady_clock::now() + bound;
    MutexLock lock(mutex_);
    while (open_ != 0 && drained_.wait_until(lock, until) != std::cv_status::timeout) {
    }
}

void CurlNetworkThread::end(std::chrono::milliseconds bound) {
    closed_ = true;
    if (!thread_.exists()) {
        return;
    }
    MutexLock lock(mutex_);
    ended_ = true;
    const bool wake = std::exchange(asleep_, false);
    lock.unlock();
    if (wake) {
        transfers_->wake();
    }
    moreCame_.notify_one();
    thread_.join(bound);
}

void CurlNetworkThread::forkedAway() noexcept {
    if (thread_.exists()) {
        thread_.forget();
        closed_ = true;
    }
}

} // namespace zentavo::linux_port
