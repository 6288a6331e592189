#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "support/Traffic.h"

namespace bench {

enum class CollectorMode {
    answer, ///< 200 and a small JSON object
    silent, ///< accepts, reads, and never answers
    fail,   ///< 500
};

/// An HTTP/1.1 server that does as little as a client can be fooled with: one thread, kept-alive connections on the
/// loopback interface, bodies by "Content-Length" only. Made to cost next to nothing, so that what is measured is the
/// client.
class Collector {
public:
    /// Listens from now on; `run` serves. `traffic` must outlive the collector.
    Collector(CollectorMode mode, Traffic& traffic);
    ~Collector();
    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    std::uint16_t port() const noexcept { return port_; }
    /// Serves on the calling thread until `stop`.
    void run();
    /// Any thread.
    void stop();

private:
    struct Connection {
        std::string pending; ///< received and not yet a whole request
    };

    void accept();
    bool receive(int socket, Connection& connection);
    std::size_t requestsIn(std::string& pending);
    void count(std::size_t bodyBytes);
    void forget(int socket);

    const CollectorMode mode_;
    Traffic& traffic_;
    int listener_;
    int poller_;
    int stopper_;
    std::uint16_t port_ = 0;
    std::unordered_map<int, Connection> connections_;
};

} // namespace bench
