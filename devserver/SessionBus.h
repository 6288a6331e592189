#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "devserver/GLibPointers.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::devserver {

/// A connection to a D-Bus bus with a thread and a main context of its own: all that comes from the bus is handled there,
/// one after the other, and the thread ends with this object.
class SessionBus {
public:
    using Block = std::function<void()>;
    /// Null when the call was answered.
    using Answered = std::function<void(const GError*)>;

    /// Where the session's bus is; empty when there is none. A bus is never started for it.
    static std::string address();

    SessionBus() = default;
    ~SessionBus() { stop(); }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    /// Connects, has `setUp` register what the name stands for, and takes the name. Once. `limit` bounds each step;
    /// a bus that lets in and then says nothing is given up after the library's 25 seconds.
    Result<void> start(const std::string& address, const std::string& name, std::chrono::milliseconds limit,
                       std::function<Result<void>(GDBusConnection*)> setUp);
    /// Cancels what is under way, gives the name back and returns when the thread has ended. Not on the bus's thread.
    void stop();

    /// Runs `block` on the bus's thread; false, and never, once the bus has been stopped.
    bool async(Block block);

    /// On the bus's thread. Takes over a floating `arguments`. `answered` (may be null) is called there, exactly once and
    /// never from within; the called program is started where that is how the bus knows it.
    struct Target {
        std::string name;
        const char* path;
        const char* interface;
        const char* method;
    };
    void call(const Target& target, GVariant* arguments, std::chrono::milliseconds limit, Answered answered);
    std::size_t pending() const noexcept { return pending_; }

private:
    struct Setup;

    void run(Setup& setup);
    Result<void> open(const Setup& setup);
    void close();
    void runBlocks();
    bool isStopped();

    const GLibPointer<GMainContext> context_{g_main_context_new()};
    const GLibPointer<GCancellable> cancellable_{g_cancellable_new()};
    /// The bus's thread only, like `pending_`.
    GLibPointer<GDBusConnection> connection_;
    std::size_t pending_ = 0;
    std::string name_;

    Mutex mutex_;
    std::vector<Block> blocks_ ZENTAVO_GUARDED_BY(mutex_);
    bool stopped_ ZENTAVO_GUARDED_BY(mutex_) = false;
    std::thread thread_;
};

} // namespace zentavo::devserver
