#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/URL.h"

namespace zentavo::tests {

/// A small HTTP/1.1 server on 127.0.0.1 whose answers a test writes byte by byte, broken ones included. Connections are
/// kept alive; each has a thread. A client that begins with a TLS handshake shows up as the method "TLS" on "/tls". It stops when it is destroyed, and gives up on anything that takes 20 seconds.
class LoopbackServer {
public:
    struct Request {
        std::string method;
        std::string target;
        std::vector<std::pair<std::string, std::string>> headers;
        std::string body;
        int connection = 0; ///< counted from 1 in the order in which they came

        /// The value under `name`, in any case of letters; "(none)" when there is none.
        std::string header(std::string_view name) const;
    };

    class Reply {
    public:
        /// Bytes as they are.
        void send(std::string_view bytes);
        /// A whole answer with its length. `headers` are lines, each with its "\r\n".
        void answer(int status, std::string_view body = {}, std::string_view headers = {});
        /// Ends the connection in good order, or with a reset.
        void close();
        void reset();
        /// Waits until the client goes away or the server stops; sends nothing.
        void hang();

    private:
        friend class LoopbackServer;
        Reply(LoopbackServer& server, int socket) : server_(server), socket_(socket) {}
        LoopbackServer& server_;
        const int socket_;
        bool closed_ = false;
    };
    /// Runs on a connection's thread, several at once.
    using Handler = std::function<void(const Request&, Reply&)>;

    explicit LoopbackServer(Handler handler);
    ~LoopbackServer();

    std::uint16_t port() const { return port_; }
    URL url(std::string_view path, std::string_view scheme = "http") const;

    /// Every request that has come in whole, in the order of arrival.
    std::vector<Request> requests() const;
    /// How many connections there have been.
    int connections() const;

private:
    void accept();
    void serve(int socket, int number);

    const Handler handler_;
    std::uint16_t port_ = 0;
    const int listener_; ///< sets `port_`
    std::atomic<bool> stopping_ = false;
    std::thread accepting_;

    mutable Mutex mutex_;
    std::vector<Request> requests_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<std::thread> threads_ ZENTAVO_GUARDED_BY(mutex_);
    int connections_ ZENTAVO_GUARDED_BY(mutex_) = 0;
};

/// A port of 127.0.0.1 on which nobody listens.
std::uint16_t closedPort();

} // namespace zentavo::tests
