#pragma once

#include <memory>

#include "zentavo/platform/MainQueue.h"

namespace zentavo::gtk {

/// The toolkit's main loop as a queue: blocks run on the main thread, between the loop's other work. A loop that runs
/// inside a block (a modal dialogue of the host) runs no further blocks until that one has ended.
class GtkMainQueue final : public platform::MainQueue {
public:
    GtkMainQueue();
    ~GtkMainQueue() override;
    GtkMainQueue(const GtkMainQueue&) = delete;
    GtkMainQueue& operator=(const GtkMainQueue&) = delete;

    void async(platform::Block block) override;
    platform::TimerId after(std::chrono::nanoseconds delay, platform::Block block) override;
    bool cancel(platform::TimerId timer) override;
    bool isCurrent() const override;

private:
    class Board;
    const std::shared_ptr<Board> board_;
};

} // namespace zentavo::gtk
