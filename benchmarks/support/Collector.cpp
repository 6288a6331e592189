#include "support/Collector.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/Failure.h"
#include "support/SteadyTime.h"

namespace bench {

namespace {

constexpr std::string_view good = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 15\r\n\r\n"
                                  "{\"status\":\"ok\"}";
constexpr std::string_view bad = "HTTP/1.1 500 Internal Server Error\r\nContent-Type: application/json\r\n"
                                 "Content-Length: 18\r\n\r\n{\"status\":\"broken\"}";

/// The bytes of body that `head` announces.
std::size_t announcedBytes(std::string_view head) {
    constexpr std::string_view name = "content-length:";
    const auto same = [](char a, char b) { return a == b || (a >= 'A' && a <= 'Z' && a + ('a' - 'A') == b); };
    const auto found = std::search(head.begin(), head.end(), name.begin(), name.end(), same);
    if (found == head.end()) {
        return 0;
    }
    std::size_t begin = static_cast<std::size_t>(found - head.begin()) + name.size();
    while (begin < head.size() && head[begin] == ' ') {
        ++begin;
    }
    std::size_t bytes = 0;
    std::from_chars(head.data() + begin, head.data() + head.size(), bytes);
    return bytes;
}

void watch(int poller, int descriptor) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    checkSystem(epoll_ctl(poller, EPOLL_CTL_ADD, descriptor, &event) == 0, "the collector's poller");
}

} // namespace

Collector::Collector(CollectorMode mode, Traffic& traffic)
    : mode_(mode), traffic_(traffic), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)),
      poller_(epoll_create1(EPOLL_CLOEXEC)), stopper_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    checkSystem(bind(listener_, generic, size) == 0 && listen(listener_, 128) == 0 &&
                    getsockname(listener_, generic, &size) == 0,
                "the collector's port");
    port_ = ntohs(address.sin_port);
    watch(poller_, listener_);
    watch(poller_, stopper_);
}

Collector::~Collector() {
    for (const auto& [socket, connection] : connections_) {
        close(socket);
    }
    close(listener_);
    close(poller_);
    close(stopper_);
}

void Collector::stop() {
    const std::uint64_t one = 1;
    checkSystem(write(stopper_, &one, sizeof one) == sizeof one, "stopping the collector");
}

void Collector::run() {
    std::array<epoll_event, 64> events{};
    for (;;) {
        const int ready = epoll_wait(poller_, events.data(), events.size(), -1);
        for (int i = 0; i < ready; ++i) {
            const int descriptor = events.at(static_cast<std::size_t>(i)).data.fd;
            if (descriptor == stopper_) {
                return;
            }
            if (descriptor == listener_) {
                accept();
            } else if (!receive(descriptor, connections_[descriptor])) {
                forget(descriptor);
            }
        }
    }
}

void Collector::accept() {
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket < 0) {
        return;
    }
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    connections_[socket];
    watch(poller_, socket);
    traffic_.connections.fetch_add(1, std::memory_order_relaxed);
}

/// False when the connection is over.
bool Collector::receive(int socket, Connection& connection) {
    static thread_local std::array<char, 64U << 10U> buffer;
    const ssize_t received = recv(socket, buffer.data(), buffer.size(), 0);
    if (received <= 0) {
        return received < 0 && errno == EAGAIN;
    }
    connection.pending.append(buffer.data(), static_cast<std::size_t>(received));
    const std::size_t requests = requestsIn(connection.pending);
    if (mode_ == CollectorMode::silent) {
        return true;
    }
    const std::string_view answer = mode_ == CollectorMode::answer ? good : bad;
    for (std::size_t i = 0; i < requests; ++i) {
        // An answer is far smaller than a socket's buffer: it fits or the client is gone.
        if (send(socket, answer.data(), answer.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(answer.size())) {
            return false;
        }
    }
    return true;
}

/// Takes the whole requests out of `pending` and counts them.
std::size_t Collector::requestsIn(std::string& pending) {
    constexpr std::string_view headEnd = "\r\n\r\n";
    std::string_view rest = pending;
    std::size_t requests = 0;
    for (;;) {
        const std::size_t end = rest.find(headEnd);
        if (end == std::string_view::npos) {
            break;
        }
        const std::size_t headBytes = end + headEnd.size();
        const std::size_t bodyBytes = announcedBytes(rest.substr(0, headBytes));
        if (rest.size() - headBytes < bodyBytes) {
            break;
        }
        count(bodyBytes);
        ++requests;
        rest.remove_prefix(headBytes + bodyBytes);
    }
    pending.erase(0, pending.size() - rest.size());
    return requests;
}

void Collector::count(std::size_t bodyBytes) {
    const std::int64_t now = steadyNanoseconds();
    if (traffic_.requests.load(std::memory_order_relaxed) == 0) {
        traffic_.firstAt.store(now, std::memory_order_relaxed);
    }
    traffic_.lastAt.store(now, std::memory_order_relaxed);
    traffic_.bodyBytes.fetch_add(bodyBytes, std::memory_order_relaxed);
    traffic_.lastBodyBytes.store(bodyBytes, std::memory_order_relaxed);
    // Last, and with release: who sees the count sees the rest.
    traffic_.requests.fetch_add(1, std::memory_order_release);
}

void Collector::forget(int socket) {
    connections_.erase(socket);
    close(socket);
}

} // namespace bench
