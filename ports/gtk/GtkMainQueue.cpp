#include "ports/gtk/GtkMainQueue.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>

#include <glib.h>

#include "ports/gtk/MainThread.h"
#include "zentavo/foundation/Fault.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo::gtk {

using platform::Block;
using platform::TimerId;
using std::chrono::nanoseconds;
using Clock = std::chrono::steady_clock;

namespace {

/// Longer delays count as this one: adding them to the clock must not overflow.
constexpr nanoseconds longestDelay = std::chrono::hours(24 * 365 * 100);

} // namespace

/// What waits, and the loop's source that runs it. The source holds the board, so blocks outlive their queue.
class GtkMainQueue::Board : public std::enable_shared_from_this<Board> {
public:
    ~Board() {
        if (source_ != nullptr) {
            g_source_unref(source_);
        }
    }

    /// Begins to listen to the loop.
    void attach() {
        static GSourceFuncs functions{nullptr, nullptr, &Board::dispatch, &Board::finalize, nullptr, nullptr};
        source_ = g_source_new(&functions, sizeof(Source));
        reinterpret_cast<Source*>(source_)->board = new std::shared_ptr<Board>(shared_from_this());
        g_source_set_static_name(source_, "zentavo main queue");
        g_source_set_ready_time(source_, -1);
        g_source_attach(source_, nullptr);
    }

    TimerId post(nanoseconds delay, Block block) {
        const auto due = Clock::now() + std::clamp(delay, nanoseconds(0), longestDelay);
        MutexLock lock(mutex_);
        const TimerId id = ++last_;
        waiting_.emplace(Place{due, id}, std::move(block));
        dueOf_.emplace(id, due);
        wakeForFirst();
        return id;
    }

    bool cancel(TimerId timer) {
        Block dropped; // destroyed after the lock is gone
        MutexLock lock(mutex_);
        const auto found = dueOf_.find(timer);
        if (found == dueOf_.end()) {
            return false;
        }
        const auto place = waiting_.find(Place{found->second, timer});
        dropped = std::move(place->second);
        waiting_.erase(place);
        dueOf_.erase(found);
        return true;
    }

    /// The queue is gone: once nothing waits any more the loop is left.
    void close() {
        MutexLock lock(mutex_);
        closed_ = true;
        wakeForFirst();
    }

private:
    using Place = std::pair<Clock::time_point, TimerId>;
    struct Source {
        GSource base;
        std::shared_ptr<Board>* board;
    };

    static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
        const auto self = *reinterpret_cast<Source*>(source)->board;
        return self->runDue() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
    }
    static void finalize(GSource* source) { delete reinterpret_cast<Source*>(source)->board; }

    /// Runs what is due now, without what that posts: the loop has other work too. False when nothing will come any
    /// more.
    bool runDue() {
        const auto now = Clock::now();
        MutexLock lock(mutex_);
        const TimerId last = last_;
        while (!waiting_.empty() && waiting_.begin()->first.first <= now && waiting_.begin()->first.second <= last) {
            Block block = std::move(waiting_.begin()->second);
            dueOf_.erase(waiting_.begin()->first.second);
            waiting_.erase(waiting_.begin());
            lock.unlock();
            entryPoint("main queue", block);
            block = nullptr;
            lock.lock();
        }
        if (closed_ && waiting_.empty()) {
            return false;
        }
        wakeForFirst();
        return true;
    }

    void wakeForFirst() ZENTAVO_REQUIRES(mutex_) {
        if (waiting_.empty()) {
            g_source_set_ready_time(source_, closed_ ? 0 : -1);
            return;
        }
        // The loop counts microseconds of the same clock; rounded up, since a block must not be early.
        const auto due = waiting_.begin()->first.first.time_since_epoch();
        g_source_set_ready_time(source_, std::chrono::ceil<std::chrono::microseconds>(due).count());
    }

    GSource* source_ = nullptr;
    Mutex mutex_;
    bool closed_ ZENTAVO_GUARDED_BY(mutex_) = false;
    TimerId last_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::map<Place, Block> waiting_ ZENTAVO_GUARDED_BY(mutex_);
    std::unordered_map<TimerId, Clock::time_point> dueOf_ ZENTAVO_GUARDED_BY(mutex_);
};

GtkMainQueue::GtkMainQueue() : board_(std::make_shared<Board>()) { board_->attach(); }

GtkMainQueue::~GtkMainQueue() { board_->close(); }

void GtkMainQueue::async(Block block) { board_->post(nanoseconds(0), std::move(block)); }

TimerId GtkMainQueue::after(nanoseconds delay, Block block) { return board_->post(delay, std::move(block)); }

bool GtkMainQueue::cancel(TimerId timer) { return board_->cancel(timer); }

bool GtkMainQueue::isCurrent() const { return MainThread::isCurrent(); }

} // namespace zentavo::gtk
