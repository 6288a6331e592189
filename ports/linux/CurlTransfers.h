#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "ports/linux/CurlLibrary.h"
#include "ports/linux/CurlTask.h"
#include "ports/linux/CurlTransfer.h"
#include "ports/linux/HostLimiter.h"
#include "ports/linux/WakeUp.h"

namespace zentavo::linux_port {

/// All exchanges under way: one multi handle with its connections, cookies and TLS sessions, and a few easy handles
/// that are used in turn. Network thread only, but for `wake`.
class CurlTransfers {
public:
    explicit CurlTransfers(const CurlLibrary& curl);
    /// Breaks off what is under way, without a word to anybody.
    ~CurlTransfers();

    /// Begins `task`, or puts it behind the others of its host.
    void add(std::shared_ptr<CurlTask> task);
    /// Ends `task` if it has not ended.
    void cancel(const std::shared_ptr<CurlTask>& task);

    /// Moves bytes, begins and ends exchanges, and hands what has ended to the callers' queues: several for one queue
    /// are one block, for which a busy network waits up to a millisecond. Returns how many were handed over.
    std::size_t turn();
    /// Waits until there is something to do for `turn`, or `wake` is called, perhaps before.
    void wait();
    /// Any thread.
    void wake();
    /// An origin for whose exchanges there is no need to wake anybody: they can only begin when others end.
    std::string_view full() const { return hosts_.full(); }

private:
    struct Ended {
        std::shared_ptr<CurlTask> task;
        platform::URLResult result;
    };

    void begin(std::shared_ptr<CurlTask> task);
    void beginAdmitted();
    /// Makes room at the host of an admitted exchange.
    void leave(const URL& url, std::optional<bool> multiplexed);
    void finish(CurlTransfer& transfer, platform::URLResult result);
    void finish(std::shared_ptr<CurlTask> task, platform::URLResult result);
    void finishOverdue(CurlTransfer::Moment now);
    std::size_t deliver();

    const CurlLibrary curl_;
    CURLM* const multi_;
    CURLSH* const share_;
    WakeUp wakeUp_;
    HostLimiter hosts_;
    std::deque<std::shared_ptr<CurlTask>> admitted_; ///< to begin in the next turn
    std::vector<std::unique_ptr<CurlTransfer>> active_;
    std::vector<std::unique_ptr<CurlTransfer>> idle_;
    std::vector<Ended> ended_;
    CurlTransfer::Moment deliverBy_; ///< while there are any of them
};

} // namespace zentavo::linux_port
