#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <thread>

#include "devserver/Connection.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::devserver {

/// Takes connections and gives each a thread of its own, so that one that waits or hangs keeps nobody else waiting.
/// Beyond `maximumConnections` a new one is closed at once.
class Listener {
public:
    static constexpr std::size_t maximumConnections = 512;

    /// Serves one connection until it ends; called on the connection's thread.
    using Serve = std::function<void(Connection&)>;

    /// Listens from now on; connections wait until `start`. Port 0 means any free one.
    static Result<std::unique_ptr<Listener>> open(const std::string& host, std::uint16_t port);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::uint16_t port() const noexcept { return port_; }
    void start(Serve serve);
    /// Ends all connections and returns when their threads have. May be called more than once.
    void stop();

private:
    struct Session {
        std::unique_ptr<Connection> connection;
        std::thread thread;
    };

    Listener(int socket, std::uint16_t port) noexcept : socket_(socket), port_(port) {}
    void acceptAll();
    void take(int socket);
    void serve(std::list<Session>::iterator session);
    void joinFinished();

    const int socket_;
    const std::uint16_t port_;
    Serve serve_;
    std::thread acceptor_;
    Mutex mutex_;
    std::list<Session> sessions_ ZENTAVO_GUARDED_BY(mutex_);
    /// Sessions whose thread is about to end.
    std::list<Session> finished_ ZENTAVO_GUARDED_BY(mutex_);
    ConditionVariable sessionEnded_;
    bool stopping_ ZENTAVO_GUARDED_BY(mutex_) = false;
};

/// True for addresses that only this machine can reach.
bool isLoopback(const std::string& host);

} // namespace zentavo::devserver
