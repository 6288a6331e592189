#pragma once

#include <asio/io_context.hpp>

namespace zentavo::websocket {

/// The library's one thread, for all clients and servers of the process. It starts when it is first needed, takes none
/// of the host's signals, and is stopped when the process exits: what has not been sent by then is not sent any more.
class IOThread {
public:
    static IOThread& shared();

    asio::io_context& context() noexcept { return context_; }
    /// Whether the calling thread is this one.
    static bool isCurrent() noexcept;
    /// Has the thread stopped before anything is undone that was registered for the end of the process until now, and
    /// `last` called by it before that. For one library that the thread uses and that is there later than itself.
    static void stopAtExit(void (*last)());

private:
    IOThread();
    static void stop();

    asio::io_context context_{1};
};

} // namespace zentavo::websocket
